#include <cstdio>
#include <limits>
#include <memory>
#include <string>

#include "apps/cli/command.h"
#include "apps/cli/json.h"
#include "apps/cli/progress.h"
#include "apps/cli/table_help.h"
#include "apps/cli/table_output.h"
#include "host/error.h"
#include "host/runtime.h"
#include "host/table_data.h"
#include "host/table_export.h"
#include "host/table_import.h"
#include "host/text_number.h"

namespace ktl::cli {

namespace {

struct TableArguments {
    std::string file;
    std::string layer;
    /// The word, the statement or the target.
    std::string second;
    std::string limit;
    bool csv = false;
    bool json = false;
    bool overwrite = false;

    TableForm Form() const { return csv ? TableForm::kCsv : json ? TableForm::kJson : TableForm::kAligned; }
    host::TableSource Source() const { return {file, layer}; }
};

constexpr const char *kInterrupted = "ktl table: interrupted\n";
constexpr const char *kGoesOn = "ktl table: the statement is brought to its end; once more ends it in its middle\n";
constexpr long long kAllRows = std::numeric_limits<long long>::max();

long long Limit(const TableArguments &arguments) {
    if (arguments.limit.empty()) return kAllRows;
    const auto number = host::ParseNumber<long long>(arguments.limit);
    if (!number || *number < 0) throw UsageError("--limit takes a number of rows, not '" + arguments.limit + "'");
    return *number;
}

void Tell(const std::string &note) {
    std::fprintf(stderr, "ktl table: %s\n", note.c_str());
}

std::string Counted(long long count, const char *what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string Joined(const std::vector<std::string> &names) {
    std::string text;
    for (const std::string &name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

// The columns as rows of a table of their own.
void PrintColumns(const host::TableInfo &info, TableForm form) {
    using host::CellKind;
    using host::ColumnType;
    const auto number = [](int value) {
        return value > 0 ? host::TableCell{CellKind::kNumber, std::to_string(value)} : host::TableCell();
    };
    const auto output = MakeTableOutput(form);
    output->TakeColumns({{"column"}, {"type"}, {"width", ColumnType::kInteger}, {"decimals", ColumnType::kInteger}});
    for (const host::TableColumn &column : info.columns) {
        output->TakeRow({{CellKind::kText, column.name},
                         {CellKind::kText, host::WordFor(column.type)},
                         number(column.width),
                         number(column.decimals)});
    }
    output->Finish();
}

void PrintInfoAsJson(const host::TableInfo &info) {
    JsonWriter json;
    json.BeginObject().Text("layer", info.layer).BeginArray("layers");
    for (const std::string &layer : info.layers) json.Text({}, layer);
    json.End().BeginArray("columns");
    for (const host::TableColumn &column : info.columns) {
        json.BeginObject().Text("name", column.name).Text("type", host::WordFor(column.type));
        json.Number("width", column.width).Number("decimals", column.decimals).End();
    }
    Print(json.End().Number("rows", info.rows).End().Result());
}

void RunInfo(const TableArguments &arguments) {
    const InterruptMessage interrupt(kInterrupted, OnInterrupt::kEnd);
    const host::Runtime runtime;
    const host::TableInfo info = host::DescribeTable(arguments.Source());
    if (arguments.json) return PrintInfoAsJson(info);
    PrintColumns(info, arguments.Form());
    if (!arguments.csv) Print("\n" + Counted(info.rows, "row") + "\n");
    if (info.layers.size() > 1) Tell("'" + info.layer + "' is one of the layers " + Joined(info.layers));
}

// Passes on the rows that hold a word, and no more than so many.
class RowFilter : public host::TableSink {
  public:
    RowFilter(TableOutput &output, const std::string &word, long long most)
        : m_output(output), m_word(word), m_left(most) {}

    void TakeColumns(const std::vector<host::TableColumn> &columns) override { m_output.TakeColumns(columns); }
    bool TakeRow(const host::TableRow &row) override {
        if (m_left > 0 && Holds(row)) {
            m_output.TakeRow(row);
            --m_left;
        }
        return m_left > 0;
    }

  private:
    bool Holds(const host::TableRow &row) const {
        if (m_word.empty()) return true;
        for (const host::TableCell &cell : row) {
            if (cell.kind != host::CellKind::kBytes && cell.text.find(m_word) != std::string::npos) return true;
        }
        return false;
    }

    TableOutput &m_output;
    const std::string &m_word;
    long long m_left;
};

void RunRows(const TableArguments &arguments) {
    const long long limit = Limit(arguments);
    const InterruptMessage interrupt(kInterrupted, OnInterrupt::kEnd);
    const host::Runtime runtime;
    const auto output = MakeTableOutput(arguments.Form());
    RowFilter filter(*output, arguments.second, limit);
    host::ReadTable(arguments.Source(), filter);
    output->Finish();
}

void PrintTouched(long long rows, TableForm form) {
    if (form == TableForm::kAligned) return Print(Counted(rows, "row") + "\n");
    const auto output = MakeTableOutput(form);
    output->TakeColumns({{"rows", host::ColumnType::kInteger}});
    output->TakeRow({{host::CellKind::kNumber, std::to_string(rows)}});
    output->Finish();
}

void RunSql(const TableArguments &arguments) {
    const bool mustEnd = host::MayChangeFiles(arguments.file, arguments.second);
    const InterruptMessage interrupt(mustEnd ? kGoesOn : kInterrupted,
                                     mustEnd ? OnInterrupt::kGoOn : OnInterrupt::kEnd);
    const host::Runtime runtime;
    const auto output = MakeTableOutput(arguments.Form());
    const host::StatementResult result = host::RunStatement(arguments.file, arguments.second, *output);
    if (!result.gaveRows) return PrintTouched(result.touched, arguments.Form());
    output->Finish();
}

void TellReport(const std::string &target, const host::TableReport &report) {
    for (const std::string &note : report.notes) Tell(note);
    if (report.replacedCharacters > 0) {
        Tell("characters replaced that GBK lacks: " + std::to_string(report.replacedCharacters));
    }
    Print("wrote " + target + ": " + Counted(report.rows, "row") + "\n");
}

void RunImport(const TableArguments &arguments) {
    const host::Runtime runtime;
    host::TableReport report;
    {
        TerminalProgress progress;
        report = host::ImportToFile(arguments.Source(), arguments.second, arguments.overwrite, progress.Callback());
    }
    TellReport(arguments.second, report);
}

void RunExport(const TableArguments &arguments) {
    const host::Runtime runtime;
    host::TableReport report;
    {
        TerminalProgress progress;
        report = host::ExportRows(arguments.Source(), {arguments.second, arguments.overwrite}, progress.Callback());
    }
    TellReport(arguments.second, report);
}

using Arguments = std::shared_ptr<TableArguments>;

struct Part {
    const char *name;
    const char *first;
    /// Null for none.
    const char *second;
    void (*run)(const TableArguments &arguments);
    bool takesLayer;
    bool takesLimit;
    bool takesForm;
    bool takesOverwrite;
};
constexpr Part kParts[] = {
    {"info", "FILE", nullptr, RunInfo, true, false, true, false},
    {"show", "FILE", nullptr, RunRows, true, true, true, false},
    {"search", "FILE", "WORD", RunRows, true, true, true, false},
    {"sql", "STORE", "STATEMENT", RunSql, false, false, true, false},
    {"import", "FILE", "TARGET", RunImport, true, false, false, true},
    {"export", "FILE", "TARGET", RunExport, true, false, false, true},
};

void ShowHelp(CLI::App &app) {
    app.formatter_fn([](const CLI::App *, std::string, CLI::AppFormatMode) { return std::string(kTableHelp); });
}

void AddPart(CLI::App &table, const Part &part, const Arguments &arguments) {
    CLI::App *app = table.add_subcommand(part.name);
    ShowHelp(*app);
    app->add_option(part.first, arguments->file)->required();
    if (part.second != nullptr) app->add_option(part.second, arguments->second)->required();
    if (part.takesLayer) app->add_option("--layer", arguments->layer);
    if (part.takesLimit) app->add_option("--limit", arguments->limit);
    if (part.takesOverwrite) app->add_flag("--overwrite", arguments->overwrite);
    if (part.takesForm) {
        CLI::Option *csv = app->add_flag("--csv", arguments->csv);
        app->add_flag("--json", arguments->json)->excludes(csv);
    }
    app->callback([arguments, run = part.run] { run(*arguments); });
}

}  // namespace

void AddTableCommand(CLI::App &program) {
    CLI::App *table = program.add_subcommand("table", "look into attribute tables, convert them, send them statements");
    ShowHelp(*table);
    table->require_subcommand(0, 1);
    const auto arguments = std::make_shared<TableArguments>();
    for (const Part &part : kParts) AddPart(*table, part, arguments);
    // CLI11 would say only that something is required.
    table->allow_extras();
    table->callback([table] {
        if (!table->get_subcommands().empty()) return;
        const std::vector<std::string> rest = table->remaining();
        const std::string what = rest.empty() ? "no command given" : "unknown command '" + rest.front() + "'";
        throw UsageError(what + " (see 'ktl table --help')");
    });
}

}  // namespace ktl::cli
