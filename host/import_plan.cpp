#include "host/import_plan.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

#include "host/error.h"
#include "host/text_number.h"
#include "ktl/attributes/fields.h"
#include "ktl/platform/ado/value.h"
#include "ktl/platform/encoding.h"

namespace ktl::host {

namespace {

using RowUse = std::function<void(const TableRow &)>;
using ColumnsUse = std::function<void(const std::vector<TableColumn> &)>;

constexpr int kNameBytes = 10;
constexpr int kCharBytes = 254;
constexpr std::size_t kMostColumns = 253;
/// A number column has 20 characters, 10 of them behind the point: with a sign, 8 digits in front of it.
constexpr double kLargestNumber = 99999999.9;
constexpr int kDecimals = 10;
constexpr long long kRowsBetweenReports = 1000;

// At most `bytes` of a text, never half a character.
CString CutBetweenCharacters(const CString &text, int bytes) {
    int length = 0;
    while (length < text.GetLength()) {
        const auto step = static_cast<int>(CharLength(text.View(), static_cast<std::size_t>(length)));
        if (length + step > bytes) break;
        length += step;
    }
    return text.Left(length);
}

bool IsNameByte(char c) {
    return c == '_' || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// Letters, digits, underscores and two-byte characters, no digit in front.
CString PlainName(const CString &name) {
    std::string plain;
    const std::string_view text = name.View();
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t step = CharLength(text, i);
        if (step == 2) {
            plain += text.substr(i, 2);
        } else {
            plain += IsNameByte(text[i]) ? text[i] : '_';
        }
        i += step;
    }
    if (plain.empty() || (plain[0] >= '0' && plain[0] <= '9')) plain.insert(0, "_");
    return CutBetweenCharacters(CString(plain), kNameBytes);
}

// The system marks a column called Update as its own; the others mean something in statements.
bool IsTaken(const CFields &fields, const CString &name) {
    constexpr const char *kReserved[] = {"Update", "Not", "Null", "True", "False"};
    return fields.IsExist(name) != 0 || std::any_of(std::begin(kReserved), std::end(kReserved),
                                                    [&](const char *word) { return name.CompareNoCase(word) == 0; });
}

CString UniqueName(const CFields &fields, const CString &wanted) {
    CString name = wanted;
    for (int i = 1; IsTaken(fields, name); ++i) {
        CString number;
        number.Format("%d", i);
        name = CutBetweenCharacters(wanted, kNameBytes - number.GetLength()) + number;
    }
    return name;
}

ENUM_DATA TypeFor(const TableColumn &column, TablePurpose purpose) {
    switch (column.type) {
        case ColumnType::kInteger:
            return column.isLong ? DATA_BIGINT : DATA_INT;
        case ColumnType::kNumber:
            return DATA_NUMERIC;
        case ColumnType::kYesNo:
            return DATA_BOOL;
        case ColumnType::kBytes:
            return DATA_BINARY;
        case ColumnType::kDate:
        case ColumnType::kDateTime:
            return purpose == TablePurpose::kFile ? DATA_DATETIME : DATA_CHAR;
        default:
            return DATA_CHAR;
    }
}

// With as many decimals as a number column keeps; empty for what it cannot hold.
std::string FixedText(const std::string &number) {
    if (const auto exact = ado::DecimalFromText(number)) {
        return ado::DecimalToText(*ado::DecimalFromText(ado::DecimalToFixed(*exact, kDecimals)));
    }
    char text[512];
    const double value = ParseNumber<double>(number).value_or(HUGE_VAL);
    if (!std::isfinite(value)) return {};
    return FixedText({text, std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, kDecimals).ptr});
}

enum class Fit { kExact, kRounded, kNot };

// Nothing beyond the column's range, and no small number that would become 0.
Fit FitOfNumber(const std::string &number) {
    const double value = ParseNumber<double>(number).value_or(HUGE_VAL);
    if (!std::isfinite(value) || std::fabs(value) > kLargestNumber) return Fit::kNot;
    const double kept = ParseNumber<double>(FixedText(number)).value_or(0);
    // What lies behind a double's 15 sure digits is no loss.
    if (kept == value || ado::DoubleToText(kept) == ado::DoubleToText(value)) return Fit::kExact;
    return kept == 0 ? Fit::kNot : Fit::kRounded;
}

bool FitsInteger(const std::string &text, ENUM_DATA type) {
    return type == DATA_INT ? ParseNumber<int>(text).has_value() : ParseNumber<long long>(text).has_value();
}

// A date column holds days or seconds from the year 1 on, without a zone.
bool FitsDate(const std::string &text, bool isDay) {
    static constexpr std::string_view kForm = "0000-00-00 00:00:00";
    const std::size_t dayBytes = kForm.find(' ');
    if (text.size() != dayBytes && (isDay || text.size() != kForm.size())) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isDigit = text[i] >= '0' && text[i] <= '9';
        if (kForm[i] == '0' ? !isDigit : text[i] != kForm[i]) return false;
    }
    return text.compare(0, 4, "0000") != 0;
}

// What the values of one column ask for.
struct Measured {
    Measured() = default;
    Measured(const TableColumn &column, TablePurpose purpose)
        : type(TypeFor(column, purpose)), isDay(column.type == ColumnType::kDate) {}

    ENUM_DATA type = DATA_CHAR;
    bool isDay = false;
    int longest = 1;
    bool doesNotFit = false;
    long long rounded = 0;

    void Take(const TableCell &cell) {
        if (cell.kind == CellKind::kNull || type == DATA_BOOL || type == DATA_BINARY) return;
        longest = std::max(longest, FromUtf8(cell.text).GetLength());
        if (type == DATA_NUMERIC) {
            const Fit fit = FitOfNumber(cell.text);
            doesNotFit |= fit == Fit::kNot;
            rounded += fit == Fit::kRounded ? 1 : 0;
        } else if (type == DATA_INT || type == DATA_BIGINT) {
            doesNotFit |= !FitsInteger(cell.text, type);
        } else if (type == DATA_DATETIME) {
            doesNotFit |= !FitsDate(cell.text, isDay);
        }
    }
    ENUM_DATA Choose() const {
        const ENUM_DATA chosen = doesNotFit ? DATA_CHAR : type;
        return chosen == DATA_CHAR && longest > kCharBytes ? DATA_MEMO : chosen;
    }
};

class Planner {
  public:
    explicit Planner(TablePurpose purpose) : m_purpose(purpose) {}

    void TakeColumns(const std::vector<TableColumn> &columns) {
        m_given = columns;
        m_measured.resize(columns.size());
        for (std::size_t i = 0; i < columns.size(); ++i) m_measured[i] = Measured(columns[i], m_purpose);
    }
    void TakeRow(const TableRow &row) {
        for (std::size_t i = 0; i < row.size(); ++i) m_measured[i].Take(row[i]);
    }
    ImportPlan Finish() {
        if (m_purpose == TablePurpose::kLayer) {
            for (const char *name : {"ID", "ShapeID"}) m_names.AddField(CField(-1, name, DATA_INT, 1));
        }
        for (std::size_t i = 0; i < m_given.size(); ++i) Plan(i);
        if (m_plan.columns.size() > kMostColumns) {
            throw Error("a table takes " + std::to_string(kMostColumns) + " columns, not " +
                        std::to_string(m_plan.columns.size()));
        }
        return std::move(m_plan);
    }

  private:
    void Plan(std::size_t index) {
        const Measured &measured = m_measured[index];
        const std::string &given = m_given[index].name;
        if (measured.type == DATA_BINARY) return Note(given, "holds bytes and is left out");
        int replaced = 0;
        const CString name = UniqueName(m_names, PlainName(FromUtf8(given, &replaced)));
        m_names.AddField(CField(-1, name, DATA_CHAR, 0));
        m_plan.report.replacedCharacters += replaced;
        m_plan.columns.push_back({index, name, measured.Choose(), measured.longest, measured.isDay});
        if (ToUtf8(name) != given) Note(given, "is called '" + ToUtf8(name) + "' in the table");
        if (measured.doesNotFit) {
            Note(given, "holds values that such a column of a table cannot: kept as text");
        } else if (measured.rounded > 0) {
            Note(given, "has " + std::to_string(measured.rounded) + " numbers rounded to 10 decimals");
        }
    }
    void Note(const std::string &column, const std::string &text) {
        m_plan.report.notes.push_back("column '" + column + "' " + text);
    }

    TablePurpose m_purpose;
    std::vector<TableColumn> m_given;
    std::vector<Measured> m_measured;
    CFields m_names;
    ImportPlan m_plan;
};

class RowWalk : public TableSink {
  public:
    RowWalk(Progress where, const ProgressCallback &progress, const ColumnsUse &useColumns, const RowUse &useRow)
        : m_where(where), m_progress(progress), m_useColumns(useColumns), m_useRow(useRow) {}

    void TakeColumns(const std::vector<TableColumn> &columns) override {
        Report();
        if (m_useColumns) m_useColumns(columns);
    }
    bool TakeRow(const TableRow &row) override {
        m_useRow(row);
        if (++m_where.done % kRowsBetweenReports == 0) Report();
        return true;
    }

  private:
    void Report() {
        if (m_progress && !m_progress(m_where)) throw Interrupted();
    }

    Progress m_where;
    const ProgressCallback &m_progress;
    const ColumnsUse &m_useColumns;
    const RowUse &m_useRow;
};

}  // namespace

void ImportRows(const RowSupply &rows, const ProgressCallback &progress, const RowUse &use) {
    const ColumnsUse none;
    RowWalk walk({"importing", 0, rows.count}, progress, none, use);
    rows.walk(walk);
}

ImportPlan PlanImport(const RowSupply &rows, TablePurpose purpose, const ProgressCallback &progress) {
    Planner planner(purpose);
    const ColumnsUse useColumns = [&](const std::vector<TableColumn> &columns) { planner.TakeColumns(columns); };
    const RowUse useRow = [&](const TableRow &row) { planner.TakeRow(row); };
    RowWalk walk({"measuring", 0, rows.count}, progress, useColumns, useRow);
    rows.walk(walk);
    return planner.Finish();
}

CString ImportedText(const TableCell &cell, const PlannedColumn &column, TableReport &report) {
    if (cell.kind == CellKind::kNull) return {};
    if (cell.kind == CellKind::kYesNo) return cell.text == "true" ? "1" : "0";
    if (column.type == DATA_NUMERIC) return CString(FixedText(cell.text));
    int replaced = 0;
    CString text = FromUtf8(cell.text, &replaced);
    report.replacedCharacters += replaced;
    return text;
}

}  // namespace ktl::host
