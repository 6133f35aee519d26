#include "apps/cli/table_output.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "apps/cli/display_width.h"
#include "apps/cli/json.h"
#include "host/error.h"

namespace ktl::cli {

namespace {

using host::CellKind;
using host::TableCell;
using host::TableColumn;
using host::TableRow;

constexpr std::size_t kWriteBytes = 1 << 16;

std::string Base64(const std::string &bytes) {
    static constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        unsigned group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += i + k <= bytes.size() ? kDigits[group >> (18 - 6 * k) & 63] : '=';
        }
    }
    return text;
}

// Gathers small pieces.
class Output {
  public:
    Output &operator+=(std::string_view text) {
        m_text += text;
        if (m_text.size() >= kWriteBytes) Flush();
        return *this;
    }
    void Flush() {
        Print(m_text);
        m_text.clear();
    }

  private:
    std::string m_text;
};

class AlignedOutput : public TableOutput {
  public:
    void TakeColumns(const std::vector<TableColumn> &columns) override {
        m_columns = columns;
        for (TableColumn &column : m_columns) column.name = OneLine(column.name, kMostWidth);
        for (const TableColumn &column : m_columns) m_widths.push_back(DisplayWidth(column.name));
    }
    bool TakeRow(const TableRow &row) override {
        std::vector<std::string> texts;
        for (const TableCell &cell : row) texts.push_back(TextOf(cell));
        if (m_begun) {
            Line(texts);
            return true;
        }
        for (std::size_t i = 0; i < texts.size(); ++i) m_widths[i] = std::max(m_widths[i], DisplayWidth(texts[i]));
        m_waiting.push_back(std::move(texts));
        if (m_waiting.size() == kMeasuredRows) Begin();
        return true;
    }
    void Finish() override {
        if (!m_begun) Begin();
        m_out.Flush();
    }

  private:
    static constexpr const char *kGap = "  ";
    static constexpr int kMostWidth = 80;
    static constexpr std::size_t kMeasuredRows = 1000;

    static std::string TextOf(const TableCell &cell) {
        if (cell.kind == CellKind::kBytes) return "(" + std::to_string(cell.text.size()) + " bytes)";
        return OneLine(cell.text, kMostWidth);
    }

    void Begin() {
        m_begun = true;
        std::vector<std::string> names;
        std::vector<std::string> rules;
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            names.push_back(m_columns[i].name);
            rules.emplace_back(static_cast<std::size_t>(m_widths[i]), '-');
        }
        Line(names);
        Line(rules);
        for (const auto &texts : m_waiting) Line(texts);
        m_waiting.clear();
    }
    void Line(const std::vector<std::string> &texts) {
        std::string line;
        for (std::size_t i = 0; i < texts.size(); ++i) {
            if (i > 0) line += kGap;
            const auto pad = static_cast<std::size_t>(std::max(0, m_widths[i] - DisplayWidth(texts[i])));
            if (host::IsNumber(m_columns[i].type)) line.append(pad, ' ');
            line += texts[i];
            if (!host::IsNumber(m_columns[i].type)) line.append(pad, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        m_out += line + "\n";
    }

    std::vector<TableColumn> m_columns;
    std::vector<int> m_widths;
    std::vector<std::vector<std::string>> m_waiting;
    bool m_begun = false;
    Output m_out;
};

class CsvOutput : public TableOutput {
  public:
    void TakeColumns(const std::vector<TableColumn> &columns) override {
        for (std::size_t i = 0; i < columns.size(); ++i) Field(i, columns[i].name);
        EndLine();
    }
    bool TakeRow(const TableRow &row) override {
        for (std::size_t i = 0; i < row.size(); ++i) {
            Field(i, row[i].kind == CellKind::kBytes ? Base64(row[i].text) : row[i].text);
        }
        EndLine();
        return true;
    }
    void Finish() override { m_out.Flush(); }

  private:
    void Field(std::size_t index, const std::string &text) {
        if (index > 0) m_line += ',';
        if (text.find_first_of(",\"\r\n") == std::string::npos) {
            m_line += text;
            return;
        }
        m_line += '"';
        for (const char c : text) m_line.append(c == '"' ? 2 : 1, c);
        m_line += '"';
    }
    // A line without anything would be no record.
    void EndLine() {
        m_out += m_line.empty() ? "\"\"\r\n" : m_line + "\r\n";
        m_line.clear();
    }

    std::string m_line;
    Output m_out;
};

class JsonOutput : public TableOutput {
  public:
    JsonOutput() { m_json.BeginArray(); }

    void TakeColumns(const std::vector<TableColumn> &columns) override { m_columns = columns; }
    bool TakeRow(const TableRow &row) override {
        m_json.BeginObject();
        for (std::size_t i = 0; i < row.size(); ++i) Add(m_columns[i].name, row[i]);
        m_json.End();
        m_out += m_json.Take();
        return true;
    }
    void Finish() override {
        m_out += m_json.End().Take();
        m_out.Flush();
    }

  private:
    void Add(const std::string &name, const TableCell &cell) {
        switch (cell.kind) {
            case CellKind::kNull:
                m_json.Null(name);
                return;
            case CellKind::kNumber:
                // What is not a number is spelled with letters other than an exponent's.
                if (cell.text.find_first_of("nN") == std::string::npos) {
                    m_json.Digits(name, cell.text);
                } else {
                    m_json.Null(name);
                }
                return;
            case CellKind::kYesNo:
                m_json.Bool(name, cell.text == "true");
                return;
            default:
                m_json.Text(name, cell.kind == CellKind::kBytes ? Base64(cell.text) : cell.text);
        }
    }

    JsonWriter m_json;
    std::vector<TableColumn> m_columns;
    Output m_out;
};

}  // namespace

std::unique_ptr<TableOutput> MakeTableOutput(TableForm form) {
    switch (form) {
        case TableForm::kCsv:
            return std::make_unique<CsvOutput>();
        case TableForm::kJson:
            return std::make_unique<JsonOutput>();
        default:
            return std::make_unique<AlignedOutput>();
    }
}

void Print(const std::string &text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0) return;
    throw host::Error(std::string("cannot write to standard output: ") + std::strerror(errno));
}

}  // namespace ktl::cli
