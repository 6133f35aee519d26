#include <cstdio>
#include <memory>
#include <string>

#include "apps/cli/command.h"
#include "apps/cli/progress.h"
#include "apps/cli/render_help.h"
#include "apps/cli/report.h"
#include "apps/cli/style_options.h"
#include "host/color.h"
#include "host/error.h"
#include "host/runtime.h"
#include "host/text_number.h"

namespace ktl::cli {

namespace {

// The options that belong to the whole picture, as they were typed.
struct PictureArguments {
    std::string output;
    std::string size;
    std::string extent;
    std::string center;
    std::string level;
    std::string mapType;
    std::string background;
    bool degrees = false;
    bool smooth = false;
    bool georef = false;
    bool json = false;
};

[[noreturn]] void Refuse(const std::string &option, const std::string &wants, const std::string &value) {
    throw UsageError(option + " takes " + wants + ", not '" + value + "'");
}

template <class Number>
std::vector<Number> Numbers(const std::string &option, const std::string &wants, const std::string &value,
                            char separator, std::size_t count) {
    const auto numbers = host::ParseNumbers<Number>(value, separator);
    if (!numbers || numbers->size() != count) Refuse(option, wants, value);
    return *numbers;
}

int Integer(const std::string &option, const std::string &wants, const std::string &value) {
    const auto number = host::ParseNumber<int>(value);
    if (!number) Refuse(option, wants, value);
    return *number;
}

void ReadPlace(const PictureArguments &arguments, host::RenderOptions &options) {
    if (arguments.center.empty() != arguments.level.empty()) throw UsageError("--center and --level go together");
    if (!arguments.extent.empty()) {
        const auto n = Numbers<double>("--extent", "W,S,E,N in degrees", arguments.extent, ',', 4);
        options.extent = CExtent(n[0], n[1], n[2], n[3]);
    }
    if (!arguments.center.empty()) {
        const auto n = Numbers<double>("--center", "L,B in degrees", arguments.center, ',', 2);
        options.center = host::LonLat{n[0], n[1]};
        options.level = Integer("--level", "a level from 1 to 22", arguments.level);
    }
}

void ReadSize(const PictureArguments &arguments, host::RenderOptions &options) {
    if (arguments.size.empty()) return;
    const auto n = Numbers<int>("--size", "WxH in pixels", arguments.size, 'x', 2);
    options.width = n[0];
    options.height = n[1];
}

host::RenderOptions OptionsFrom(const PictureArguments &arguments, const StyleOptions &styles) {
    host::RenderOptions options;
    options.sources = styles.Sources();
    if (options.sources.empty()) throw UsageError("no SOURCE given (see 'ktl render --help')");
    if (arguments.output.empty()) throw UsageError("no output given: -o FILE (see 'ktl render --help')");
    options.output = arguments.output;
    options.degrees = arguments.degrees;
    options.smooth = arguments.smooth;
    options.georeference = arguments.georef;
    ReadSize(arguments, options);
    ReadPlace(arguments, options);
    if (!arguments.mapType.empty()) options.mapType = Integer("--map-type", "a number", arguments.mapType);
    if (!arguments.background.empty()) {
        const auto color = host::ParseColor(arguments.background);
        if (!color) Refuse("--background", "a colour (#RRGGBB, #RGB or a name)", arguments.background);
        options.background = *color;
    }
    return options;
}

host::RenderResult RenderWithProgress(const host::RenderOptions &options) {
    TerminalProgress progress;
    return host::Render(options, progress.Callback());
}

void RunRender(const PictureArguments &arguments, const StyleOptions &styles) {
    const host::RenderOptions options = OptionsFrom(arguments, styles);
    const host::Runtime runtime;
    const host::RenderResult result = RenderWithProgress(options);
    const std::string report = arguments.json ? ReportJson(options, result) : ReportText(options, result);
    if (std::fputs(report.c_str(), stdout) < 0 || std::fflush(stdout) != 0) {
        throw host::Error("cannot write the report to standard output");
    }
}

}  // namespace

void AddRenderCommand(CLI::App &program) {
    CLI::App *command = program.add_subcommand("render", "draw map files into a georeferenced image");
    command->formatter_fn([](const CLI::App *, std::string, CLI::AppFormatMode) { return std::string(kRenderHelp); });
    auto arguments = std::make_shared<PictureArguments>();
    auto styles = std::make_shared<StyleOptions>(*command);
    command->add_option("-o,--output", arguments->output);
    command->add_option("--size", arguments->size);
    CLI::Option *extent = command->add_option("--extent", arguments->extent);
    command->add_option("--center", arguments->center)->excludes(extent);
    command->add_option("--level", arguments->level);
    CLI::Option *degrees = command->add_flag("--degrees", arguments->degrees);
    command->add_option("--map-type", arguments->mapType)->excludes(degrees);
    command->add_option("--background", arguments->background);
    command->add_flag("--smooth", arguments->smooth);
    command->add_flag("--georef", arguments->georef);
    command->add_flag("--json", arguments->json);
    command->callback([arguments, styles] { RunRender(*arguments, *styles); });
}

}  // namespace ktl::cli
