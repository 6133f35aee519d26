#include "apps/cli/json.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace ktl::cli {

namespace {

// The length of the UTF-8 character at the text's start; 0 when there is none.
std::size_t CharacterLength(std::string_view text) {
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byteAt(0);
    if (lead < 0x80) return 1;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(i) & 0xC0U) != 0x80) return 0;
    }
    const unsigned second = byteAt(1);
    if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F)) return 0;
    if ((lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F)) return 0;
    return length;
}

}  // namespace

JsonWriter &JsonWriter::BeginObject(std::string_view name) {
    return Begin(name, '{', '}');
}
JsonWriter &JsonWriter::BeginArray(std::string_view name) {
    return Begin(name, '[', ']');
}

JsonWriter &JsonWriter::Begin(std::string_view name, char open, char close) {
    StartValue(name);
    m_text += open;
    m_closers += close;
    m_first = true;
    return *this;
}

JsonWriter &JsonWriter::End() {
    const char closer = m_closers.back();
    m_closers.pop_back();
    if (!m_first) NewLine();
    m_text += closer;
    m_first = false;
    if (m_closers.empty()) m_text += '\n';
    return *this;
}

JsonWriter &JsonWriter::Text(std::string_view name, std::string_view value) {
    StartValue(name);
    AppendQuoted(value);
    return *this;
}

JsonWriter &JsonWriter::Number(std::string_view name, long long value) {
    return Digits(name, std::to_string(value));
}

JsonWriter &JsonWriter::Digits(std::string_view name, std::string_view number) {
    StartValue(name);
    m_text += number;
    return *this;
}

JsonWriter &JsonWriter::Bool(std::string_view name, bool value) {
    return Digits(name, value ? "true" : "false");
}

JsonWriter &JsonWriter::Null(std::string_view name) {
    return Digits(name, "null");
}

JsonWriter &JsonWriter::Real(std::string_view name, double value) {
    if (!std::isfinite(value)) return Null(name);
    char digits[64];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    return Digits(name, {digits, static_cast<std::size_t>(end - digits)});
}

void JsonWriter::StartValue(std::string_view name) {
    if (!m_closers.empty()) {
        if (!m_first) m_text += ',';
        NewLine();
    }
    m_first = false;
    if (m_closers.empty() || m_closers.back() == ']') return;
    AppendQuoted(name);
    m_text += ": ";
}

void JsonWriter::NewLine() {
    m_text += '\n';
    m_text.append(m_closers.size() * 2, ' ');
}

void JsonWriter::AppendQuoted(std::string_view text) {
    m_text += '"';
    while (!text.empty()) {
        const std::size_t length = CharacterLength(text);
        const char c = text.front();
        if (length == 0) {
            m_text += "\xEF\xBF\xBD";
        } else if (c == '"' || c == '\\') {
            (m_text += '\\') += c;
        } else if (length == 1 && static_cast<unsigned char>(c) < ' ') {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
            m_text += escape;
        } else {
            m_text.append(text.substr(0, length));
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    m_text += '"';
}

}  // namespace ktl::cli
