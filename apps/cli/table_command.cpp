#include <cstdio>
#include <memory>
#include <string>

#include "apps/cli/command.h"
#include "apps/cli/table_output.h"
#include "host/error.h"
#include "host/runtime.h"
#include "host/table_data.h"
#include "host/text_number.h"

namespace ktl::cli {

namespace {

constexpr const char *kTableHelp = R"(NAME
    ktl table - look into attribute tables and send them statements

SYNOPSIS
    ktl table info FILE [--layer NAME] [--csv | --json]
    ktl table show FILE [--layer NAME] [--limit N] [--csv | --json]
    ktl table search FILE WORD [--layer NAME] [--limit N] [--csv | --json]
    ktl table sql STORE STATEMENT [--csv | --json]

COMMANDS
    info      the columns and the number of rows
    show      the rows
    search    the rows with a cell that holds WORD, letter case and all
    sql       what a statement gives, or how many rows it touched

ARGUMENTS
    FILE      a .dbf file, an .mdb file, or whatever else OGR opens
    STORE     a folder of .dbf files, an .mdb file, or a connection string
              with a Provider (VFPOLEDB.1, Microsoft.Jet.OLEDB.4.0, SQLOLEDB.1)

OPTIONS
    --layer NAME   the layer (of an .mdb file: the table) to read; the first one
                   without it
    --limit N      no more than N rows
    --csv          comma-separated values instead of aligned columns
    --json         a JSON array of objects

EXAMPLES
    ktl table show roads.dbf --limit 10
    ktl table sql . "Select Top 5 * From w001 Where name Like '%国%' Order By ID"
)";

struct TableArguments {
    std::string file;
    std::string word;
    std::string layer;
    std::string limit;
    bool csv = false;
    bool json = false;

    TableForm Form() const { return csv ? TableForm::kCsv : json ? TableForm::kJson : TableForm::kAligned; }
};

long long Limit(const TableArguments &arguments) {
    if (arguments.limit.empty()) return host::kAllRows;
    const auto number = host::ParseNumber<int>(arguments.limit);
    if (!number || *number < 0) throw UsageError("--limit takes a number of rows, not '" + arguments.limit + "'");
    return *number;
}

void Print(const std::string &text) {
    if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0) {
        throw host::Error("cannot write the table to standard output");
    }
}

void PrintNotes(const host::TableData &data) {
    for (const std::string &note : data.notes) std::fprintf(stderr, "ktl table: %s\n", note.c_str());
}

std::string RowCount(const host::TableData &data) {
    return std::to_string(data.count) + (data.count == 1 ? " row\n" : " rows\n");
}

// The columns as rows of a table of their own.
host::TableData ColumnsOf(const host::TableData &data) {
    host::TableData columns;
    columns.columns = {{"column", "text", 0, false}, {"type", "text", 0, false}, {"width", "integer", 0, true}};
    for (const host::TableColumn &column : data.columns) {
        std::optional<std::string> width;
        if (column.width > 0) width = std::to_string(column.width);
        columns.rows.push_back({column.name, column.type, width});
    }
    return columns;
}

void RunInfo(const TableArguments &arguments) {
    const host::Runtime runtime;
    const host::TableData data = host::ReadTable(arguments.file, arguments.layer, {}, 0);
    std::string text = TableText(ColumnsOf(data), arguments.Form());
    if (arguments.Form() == TableForm::kAligned) text += "\n" + RowCount(data);
    Print(text);
    PrintNotes(data);
}

void RunRows(const TableArguments &arguments) {
    const long long limit = Limit(arguments);
    const host::Runtime runtime;
    const host::TableData data = host::ReadTable(arguments.file, arguments.layer, arguments.word, limit);
    Print(TableText(data, arguments.Form()));
    PrintNotes(data);
}

void RunSql(const TableArguments &arguments) {
    const host::Runtime runtime;
    const host::TableData data = host::RunStatement(arguments.file, arguments.word);
    Print(data.columns.empty() ? RowCount(data) : TableText(data, arguments.Form()));
}

CLI::App *AddPart(CLI::App &table, const char *name, const std::shared_ptr<TableArguments> &arguments) {
    CLI::App *part = table.add_subcommand(name);
    part->formatter_fn([](const CLI::App *, std::string, CLI::AppFormatMode) { return std::string(kTableHelp); });
    CLI::Option *csv = part->add_flag("--csv", arguments->csv);
    part->add_flag("--json", arguments->json)->excludes(csv);
    return part;
}

}  // namespace

void AddTableCommand(CLI::App &program) {
    CLI::App *table = program.add_subcommand("table", "look into attribute tables and send them statements");
    table->formatter_fn([](const CLI::App *, std::string, CLI::AppFormatMode) { return std::string(kTableHelp); });
    table->require_subcommand(1);
    const auto arguments = std::make_shared<TableArguments>();

    for (const char *name : {"info", "show", "search"}) {
        CLI::App *part = AddPart(*table, name, arguments);
        part->add_option("FILE", arguments->file)->required();
        part->add_option("--layer", arguments->layer);
        const std::string which = name;
        if (which == "search") part->add_option("WORD", arguments->word)->required();
        if (which == "info") {
            part->callback([arguments] { RunInfo(*arguments); });
        } else {
            part->add_option("--limit", arguments->limit);
            part->callback([arguments] { RunRows(*arguments); });
        }
    }
    CLI::App *sql = AddPart(*table, "sql", arguments);
    sql->add_option("STORE", arguments->file)->required();
    sql->add_option("STATEMENT", arguments->word)->required();
    sql->callback([arguments] { RunSql(*arguments); });
}

}  // namespace ktl::cli
