#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "apps/cli/command.h"
#include "host/error.h"

namespace {

using namespace ktl::cli;

constexpr const char *kHelp = R"(NAME
    ktl - draw, query and convert maps

SYNOPSIS
    ktl COMMAND [ARGUMENT...]
    ktl --help
    ktl --version

COMMANDS
    render    draw map files into a georeferenced image
    table     look into attribute tables, convert them, send them statements

    'ktl COMMAND --help' tells about a command.

EXIT STATUS
    0    done
    1    something could not be read, drawn or written
    2    the command line was not understood
    130  interrupted
)";

// One line, whatever the text holds: a message may carry a file's name.
int Fail(const std::string &context, std::string text, int status) {
    for (char &c : text) {
        if (static_cast<unsigned char>(c) < ' ') c = ' ';
    }
    std::fprintf(stderr, "%s: %s\n", context.c_str(), text.c_str());
    return status;
}

std::string ContextOf(const CLI::App &program) {
    const auto commands = program.get_subcommands();
    return commands.empty() ? "ktl" : "ktl " + commands.front()->get_name();
}

constexpr const char *kNoCommand = "no command given (see 'ktl --help')";

// CLI11 would say only that the argument was not expected.
void CheckCommand(const CLI::App &program, int argc, char **argv) {
    const std::string first = argc < 2 ? "" : argv[1];
    if (first.empty()) throw UsageError(kNoCommand);
    if (first.starts_with('-')) return;
    for (const CLI::App *command : program.get_subcommands([](const CLI::App *) { return true; })) {
        if (command->get_name() == first) return;
    }
    throw UsageError("unknown command '" + first + "' (see 'ktl --help')");
}

int Run(CLI::App &program, int argc, char **argv) {
    try {
        CheckCommand(program, argc, argv);
        program.parse(argc, argv);
        if (program.get_subcommands().empty()) throw UsageError(kNoCommand);
        return kExitOk;
    } catch (const CLI::Success &success) {
        return program.exit(success);
    } catch (const CLI::ParseError &error) {
        const std::string context = ContextOf(program);
        return Fail(context, std::string(error.what()) + " (see '" + context + " --help')", kExitUsage);
    } catch (const UsageError &error) {
        return Fail(ContextOf(program), error.what(), kExitUsage);
    } catch (const ktl::host::Interrupted &error) {
        return Fail(ContextOf(program), error.what(), kExitInterrupted);
    } catch (const std::bad_alloc &) {
        return Fail(ContextOf(program), "not enough memory", kExitFailure);
    } catch (const std::exception &error) {
        return Fail(ContextOf(program), error.what(), kExitFailure);
    }
}

// A standard stream that came closed must not be the next file that is opened: what is meant for the stream would go
// into that file. What stands in its place fails as the closed one would.
void KeepStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) != -1) continue;
        if (open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) != stream) std::_Exit(kExitFailure);
    }
}

}  // namespace

int main(int argc, char **argv) {
    KeepStandardStreams();
    CLI::App program;
    program.name("ktl");
    program.formatter_fn([](const CLI::App *, std::string, CLI::AppFormatMode) { return std::string(kHelp); });
    program.set_version_flag("--version", "ktl " KTL_VERSION);
    program.require_subcommand(0, 1);
    AddRenderCommand(program);
    AddTableCommand(program);
    return Run(program, argc, argv);
}
