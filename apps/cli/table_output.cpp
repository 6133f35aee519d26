#include "apps/cli/table_output.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "apps/cli/json.h"

namespace ktl::cli {

namespace {

constexpr const char *kGap = "  ";

struct Range {
    char32_t first;
    char32_t last;
};

// Characters of East Asian scripts and symbols that take two columns.
constexpr Range kWide[] = {
    {0x1100, 0x115F}, {0x2E80, 0x303E},   {0x3041, 0x33FF},   {0x3400, 0x4DBF}, {0x4E00, 0x9FFF},
    {0xA000, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F}, {0xFF00, 0xFF60},
    {0xFFE0, 0xFFE6}, {0x1F300, 0x1FAFF}, {0x20000, 0x3FFFD},
};

// The code point at `at`, which moves behind it. The texts come from a converter and are sound.
char32_t Next(std::string_view text, std::size_t &at) {
    const auto lead = static_cast<unsigned char>(text[at++]);
    if (lead < 0x80) return lead;
    const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    char32_t point = lead & (0x3F >> more);
    for (int i = 0; i < more && at < text.size(); ++i)
        point = point << 6 | (static_cast<unsigned char>(text[at++]) & 0x3F);
    return point;
}

int WidthOf(char32_t point) {
    const bool wide = std::any_of(std::begin(kWide), std::end(kWide),
                                  [&](const Range &range) { return point >= range.first && point <= range.last; });
    return wide ? 2 : 1;
}

std::string OneLine(std::string text) {
    for (char &c : text) {
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7F') c = ' ';
    }
    return text;
}

void AppendPadded(std::string &out, const std::string &text, int width, bool toTheRight) {
    const auto pad = static_cast<std::size_t>(std::max(0, width - DisplayWidth(text)));
    if (toTheRight) out.append(pad, ' ');
    out += text;
    if (!toTheRight) out.append(pad, ' ');
}

std::string Aligned(const host::TableData &data) {
    const std::size_t count = data.columns.size();
    std::vector<int> widths(count);
    for (std::size_t c = 0; c < count; ++c) {
        widths[c] = DisplayWidth(data.columns[c].name);
        for (const auto &row : data.rows) widths[c] = std::max(widths[c], DisplayWidth(row[c].value_or("")));
    }
    std::string out;
    const auto line = [&](auto cell) {
        for (std::size_t c = 0; c < count; ++c) {
            if (c > 0) out += kGap;
            AppendPadded(out, OneLine(cell(c)), widths[c], data.columns[c].isNumber);
        }
        out.erase(out.find_last_not_of(' ') + 1);
        out += '\n';
    };
    line([&](std::size_t c) { return data.columns[c].name; });
    line([&](std::size_t c) { return std::string(static_cast<std::size_t>(widths[c]), '-'); });
    for (const auto &row : data.rows) line([&](std::size_t c) { return row[c].value_or(""); });
    return out;
}

void AppendCsv(std::string &out, const std::string &text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        out += text;
        return;
    }
    out += '"';
    for (const char c : text) out.append(c == '"' ? 2 : 1, c);
    out += '"';
}

std::string Csv(const host::TableData &data) {
    std::string out;
    const auto line = [&](auto cell) {
        for (std::size_t c = 0; c < data.columns.size(); ++c) {
            if (c > 0) out += ',';
            AppendCsv(out, cell(c));
        }
        out += '\n';
    };
    line([&](std::size_t c) { return data.columns[c].name; });
    for (const auto &row : data.rows) line([&](std::size_t c) { return row[c].value_or(""); });
    return out;
}

void AddJsonCell(JsonWriter &json, const host::TableColumn &column, const std::optional<std::string> &cell) {
    if (!cell || (column.isNumber && cell->empty())) {
        json.Real(column.name, std::numeric_limits<double>::quiet_NaN());
        return;
    }
    const char *end = cell->data() + cell->size();
    if (long long whole = 0; column.isNumber && std::from_chars(cell->data(), end, whole).ptr == end) {
        json.Number(column.name, whole);
    } else if (double real = 0; column.isNumber && std::from_chars(cell->data(), end, real).ptr == end) {
        json.Real(column.name, real);
    } else {
        json.Text(column.name, *cell);
    }
}

std::string Json(const host::TableData &data) {
    JsonWriter json;
    json.BeginArray();
    for (const auto &row : data.rows) {
        json.BeginObject();
        for (std::size_t c = 0; c < data.columns.size(); ++c) AddJsonCell(json, data.columns[c], row[c]);
        json.End();
    }
    json.End();
    return json.Result();
}

}  // namespace

int DisplayWidth(std::string_view utf8) {
    int width = 0;
    for (std::size_t at = 0; at < utf8.size();) width += WidthOf(Next(utf8, at));
    return width;
}

std::string TableText(const host::TableData &data, TableForm form) {
    switch (form) {
        case TableForm::kCsv:
            return Csv(data);
        case TableForm::kJson:
            return Json(data);
        default:
            return Aligned(data);
    }
}

}  // namespace ktl::cli
