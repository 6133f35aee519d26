#include "ktl/platform/ado/odbc/row_writer.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>

#include "ktl/platform/ado/error.h"
#include "ktl/platform/ado/names.h"
#include "ktl/platform/ado/odbc/command.h"
#include "ktl/platform/ado/odbc/result_reader.h"

namespace ktl::ado::odbc {

namespace {

/// The server's own view of a statement's columns, with the hidden key columns of their tables.
constexpr const char *kDescription =
    "Select is_hidden,is_part_of_unique_key,source_database,source_schema,source_table,source_column"
    " From sys.dm_exec_describe_first_result_set(?,Null,1) Order By column_ordinal";
enum DescriptionColumn { kIsHidden, kIsKey, kDatabase, kSchema, kTable, kColumn };

/// What a column takes as a byte block, and as text.
enum class Content { Bytes, Text, Other };

Content ContentOf(DataType type) {
    switch (type) {
        case DataType::Binary:
        case DataType::VarBinary:
        case DataType::LongVarBinary:
            return Content::Bytes;
        case DataType::Char:
        case DataType::VarChar:
        case DataType::LongVarChar:
        case DataType::WChar:
        case DataType::VarWChar:
        case DataType::LongVarWChar:
            return Content::Text;
        default:
            return Content::Other;
    }
}

/// Cells that a row can be compared by: long ones cannot, and bytes may be a row's version, which every change moves.
bool IsShort(DataType type) {
    return type != DataType::LongVarChar && type != DataType::LongVarWChar && ContentOf(type) != Content::Bytes;
}

std::string Bracketed(std::string_view name) {
    std::string text = "[";
    for (std::size_t i = 0; i < name.size(); i += GbkLength(name, i)) {
        text += name.substr(i, GbkLength(name, i));
        if (name[i] == ']') text += ']';
    }
    return text + "]";
}

/// The name in brackets; empty for a null.
std::string NameAt(Recordset &description, DescriptionColumn column) {
    const Value &cell = description.GetCell(column);
    return cell.IsNull() ? std::string() : Bracketed(cell.Text());
}

bool IsSet(Recordset &description, DescriptionColumn column) {
    return description.GetCell(column).ToInteger().value_or(0) != 0;
}

bool IsSame(const Value &a, const Value &b) {
    if (a.GetKind() != b.GetKind()) return false;
    return a.IsNull() || a.ToText() == b.ToText();
}

/// Behind the text, name or character that starts at `position`.
std::size_t Skip(std::string_view text, std::size_t position) {
    const char open = text[position];
    position += GbkLength(text, position);
    if (open != '\'' && open != '"' && open != '[') return position;
    // A doubled quote ends one text and begins the next, which comes to the same.
    const char close = open == '[' ? ']' : open;
    while (position < text.size() && text[position] != close) position += GbkLength(text, position);
    return std::min(position + 1, text.size());
}

bool IsWordAt(std::string_view text, std::size_t position, std::string_view word) {
    const auto isPart = [&](std::size_t at) {
        return at < text.size() && (std::isalnum(static_cast<unsigned char>(text[at])) || text[at] == '_');
    };
    return EqualNames(text.substr(position, word.size()), word) && !isPart(position + word.size()) &&
           (position == 0 || !isPart(position - 1));
}

/// The select with further columns at the end of its list; empty when it has no table.
std::string WithColumns(const std::string &select, const std::string &columns) {
    int depth = 0;
    for (std::size_t i = 0; i < select.size(); i = Skip(select, i)) {
        depth += select[i] == '(' ? 1 : select[i] == ')' ? -1 : 0;
        if (depth == 0 && IsWordAt(select, i, "From")) return select.substr(0, i) + columns + " " + select.substr(i);
    }
    return "";
}

Error Changed(const std::string &table) {
    return Error("The row cannot be found in " + CString(table) + ": it was changed or deleted since it was read.",
                 error_number::kNoCurrentRow);
}

Error Alike(const std::string &table) {
    return Error("The row cannot be told from others in " + CString(table) + ", which has no key.",
                 error_number::kReadOnly);
}

/// Sends a statement that changes rows; how many it was. A trigger's own changes do not count.
long long Change(const Link &link, const std::string &statement, std::vector<Parameter> parameters) {
    Command command(link);
    command.Run(CString("Set NoCount On; " + statement + "; Select @@RowCount"), std::move(parameters));
    if (!command.FindRows()) return 0;
    return ReadResult(command.Statement())->GetCell(0).ToInteger().value_or(0);
}

}  // namespace

/// A condition of the server's language, and what stands for its `?`.
struct RowWriter::Condition {
    std::string text;
    std::vector<Parameter> parameters;
    /// It names a key.
    bool isKey = false;

    void Add(const std::string &column, const Value &value) {
        text += (text.empty() ? "" : " And ") + column + (value.IsNull() ? " Is Null" : "=?");
        if (!value.IsNull()) parameters.push_back(Parameter::Of(value));
    }
};

RowWriter::RowWriter(std::weak_ptr<Link> link, const CString &statement)
    : m_link(std::move(link)), m_statement(statement.View()) {}

RowWriter::Source RowWriter::SourceAt(Recordset &description) {
    Source source{"", NameAt(description, kColumn), IsSet(description, kIsKey)};
    const std::string table = NameAt(description, kTable);
    if (table.empty() || source.column.empty()) return {};
    const std::string database = NameAt(description, kDatabase);
    const std::string schema = NameAt(description, kSchema);
    if (!database.empty()) source.table = database + ".";
    if (!database.empty() || !schema.empty()) source.table += schema + ".";
    source.table += table;
    return source;
}

void RowWriter::Describe(const Link &link) {
    Command command(link);
    command.Run(kDescription, {Parameter::Text(CString(m_statement))});
    for (const auto rows = ReadResult(command.Statement()); !rows->IsEOF(); rows->MoveNext()) {
        (IsSet(*rows, kIsHidden) ? m_hidden : m_shown).push_back(SourceAt(*rows));
    }
}

const RowWriter::Source &RowWriter::SourceOf(const StaticRecordset &rows, int column) const {
    const auto position = static_cast<std::size_t>(column);
    const Column &facts = rows.GetColumn(column);
    const bool isKnown = m_shown.size() == rows.GetColumns().size() && !m_shown[position].table.empty();
    if (!isKnown || ContentOf(facts.type) == Content::Other) {
        throw Error("Item \"" + facts.name + "\" is read-only: it is not text or bytes of a table.",
                    error_number::kReadOnly);
    }
    return m_shown[position];
}

bool RowWriter::IsCompared(const StaticRecordset &rows, std::size_t column) const {
    return !m_shown[column].table.empty() && IsShort(rows.GetColumns()[column].type);
}

std::vector<const RowWriter::Source *> RowWriter::HiddenKeysOf(const std::string &table) const {
    std::vector<const Source *> keys;
    for (const Source &source : m_hidden) {
        if (source.table == table) keys.push_back(&source);
    }
    return keys;
}

/// Sends the statement again with the keys behind its own columns, once for all rows.
void RowWriter::ReadHiddenKeys(const Link &link, const StaticRecordset &rows, const std::string &table) {
    std::string keys;
    for (const Source *source : HiddenKeysOf(table)) keys += "," + source->column;
    Command command(link);
    command.Run(CString(WithColumns(m_statement, keys)));
    const std::shared_ptr<StaticRecordset> again = ReadResult(command.Statement());
    if (again->GetRecordCount() != rows.GetRecordCount()) throw Changed(table);
    m_hiddenKeys.clear();
    for (; !again->IsEOF(); again->MoveNext()) {
        HiddenKey &row = m_hiddenKeys.emplace_back();
        for (std::size_t i = 0; i < again->GetColumns().size(); ++i) {
            const Value &cell = again->GetCell(static_cast<int>(i));
            if (i >= m_shown.size()) {
                row.keys.push_back(cell);
            } else if (IsCompared(rows, i)) {
                row.shown.push_back(cell);
            }
        }
    }
    m_hiddenTable = table;
}

void RowWriter::AddHiddenKey(StaticRecordset &rows, int row, const std::string &table, Condition &where) const {
    const HiddenKey &key = m_hiddenKeys.at(static_cast<std::size_t>(row));
    auto shown = key.shown.begin();
    for (std::size_t i = 0; i < m_shown.size(); ++i) {
        if (IsCompared(rows, i) && !IsSame(rows.GetCell(static_cast<int>(i)), *shown++)) throw Changed(table);
    }
    const std::vector<const Source *> sources = HiddenKeysOf(table);
    for (std::size_t i = 0; i < sources.size(); ++i) where.Add(sources[i]->column, key.keys.at(i));
}

void RowWriter::AddShownCells(StaticRecordset &rows, const std::string &table, bool keysOnly, Condition &where) const {
    for (std::size_t i = 0; i < m_shown.size(); ++i) {
        if (m_shown[i].table != table || !(keysOnly ? m_shown[i].isKey : IsCompared(rows, i))) continue;
        where.Add(m_shown[i].column, rows.GetCell(static_cast<int>(i)));
    }
}

RowWriter::Condition RowWriter::ConditionOf(const Link &link, StaticRecordset &rows, int row,
                                            const std::string &table) {
    Condition where;
    AddShownCells(rows, table, true, where);
    if (!HiddenKeysOf(table).empty()) {
        if (m_hiddenTable != table) ReadHiddenKeys(link, rows, table);
        AddHiddenKey(rows, row, table, where);
    }
    where.isKey = !where.text.empty();
    if (!where.isKey) AddShownCells(rows, table, false, where);
    if (where.text.empty()) throw Alike(table);
    // Whatever the key is worth: one row or none.
    where.text += " And (Select Count(*) From " + table + " Where " + where.text + ")=1";
    const std::vector<Parameter> once = where.parameters;
    where.parameters.insert(where.parameters.end(), once.begin(), once.end());
    return where;
}

void RowWriter::Store(StaticRecordset &rows, int row, int column, const Value &value) {
    const std::shared_ptr<Link> link = m_link.lock();
    if (!link) throw Error("Operation is not allowed when the object is closed.", error_number::kClosed);
    if (m_shown.empty()) Describe(*link);
    const Source &target = SourceOf(rows, column);
    const Condition where = ConditionOf(*link, rows, row, target.table);
    const bool isBytes = ContentOf(rows.GetColumn(column).type) == Content::Bytes;
    std::vector<Parameter> parameters{isBytes ? Parameter::Bytes(value.Bytes())
                                              : Parameter::Text(CString(value.Bytes()))};
    parameters.insert(parameters.end(), where.parameters.begin(), where.parameters.end());
    const std::string statement = "Update " + target.table + " Set " + target.column + "=? Where " + where.text;
    if (Change(*link, statement, std::move(parameters)) > 0) return;
    throw where.isKey ? Changed(target.table) : Alike(target.table);
}

}  // namespace ktl::ado::odbc
