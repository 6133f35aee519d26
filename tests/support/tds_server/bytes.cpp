#include "tests/support/tds_server/bytes.h"

namespace ktl::test::tds {
namespace {

void AppendUtf8(std::string &text, std::uint32_t code) {
    if (code < 0x80) {
        text += static_cast<char>(code);
        return;
    }
    const int tails = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    constexpr std::uint32_t kLeads[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(kLeads[tails] | (code >> (6 * tails)));
    for (int i = tails - 1; i >= 0; --i) text += static_cast<char>(0x80 | ((code >> (6 * i)) & 0x3F));
}

/// The character at `at`, which moves behind it; bytes that are no UTF-8 give U+FFFD.
std::uint32_t NextUtf8(std::string_view text, std::size_t &at) {
    const auto lead = static_cast<std::uint8_t>(text[at++]);
    if (lead < 0x80) return lead;
    const int tails = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
    if (tails == 0 || at + tails > text.size()) return 0xFFFD;
    std::uint32_t code = lead & (0x3F >> tails);
    for (int i = 0; i < tails; ++i) code = (code << 6) | (static_cast<std::uint8_t>(text[at++]) & 0x3F);
    return code;
}

}  // namespace

std::string Utf8FromUtf16(std::string_view littleEndian) {
    std::string text;
    ByteReader reader(littleEndian.substr(0, littleEndian.size() / 2 * 2));
    while (!reader.AtEnd()) {
        std::uint32_t code = reader.U16();
        if (code >= 0xD800 && code < 0xDC00 && !reader.AtEnd()) {
            code = 0x10000 + ((code - 0xD800) << 10) + ((reader.U16() - 0xDC00u) & 0x3FF);
        }
        AppendUtf8(text, code);
    }
    return text;
}

std::string Utf16FromUtf8(std::string_view utf8) {
    ByteWriter writer;
    for (std::size_t at = 0; at < utf8.size();) {
        const std::uint32_t code = NextUtf8(utf8, at);
        if (code >= 0x10000) {
            writer.U16(0xD800 + ((code - 0x10000) >> 10));
            writer.U16(0xDC00 + (code & 0x3FF));
        } else {
            writer.U16(code);
        }
    }
    return writer.Take();
}

std::uint64_t ByteReader::Unsigned(int bytes) {
    const std::string_view part = Bytes(static_cast<std::size_t>(bytes));
    std::uint64_t value = 0;
    for (int i = bytes - 1; i >= 0; --i) value = (value << 8) | static_cast<std::uint8_t>(part[i]);
    return value;
}

std::int64_t ByteReader::Signed(int bytes) {
    const int shift = 64 - 8 * bytes;
    return static_cast<std::int64_t>(Unsigned(bytes) << shift) >> shift;
}

void ByteWriter::Unsigned(std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) m_bytes += static_cast<char>((value >> (8 * i)) & 0xFF);
}

void ByteWriter::ShortText(std::string_view utf8) {
    const std::string units = Utf16FromUtf8(utf8).substr(0, 2 * 255);
    U8(static_cast<unsigned>(units.size() / 2));
    Bytes(units);
}

void ByteWriter::LongText(std::string_view utf8) {
    const std::string units = Utf16FromUtf8(utf8).substr(0, 2 * 65535);
    U16(units.size() / 2);
    Bytes(units);
}

}  // namespace ktl::test::tds
