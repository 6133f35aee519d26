#include "ktl/platform/encoding.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "ktl/platform/transliteration.h"

namespace ktl {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kEuro = 0x20AC;
constexpr unsigned kFirstLead = 0x81;
constexpr unsigned kLastLead = 0xFE;
constexpr unsigned kFirstTrail = 0x40;
constexpr unsigned kLastTrail = 0xFE;
constexpr unsigned kTrails = kLastTrail - kFirstTrail + 1;

constexpr bool IsTrailByte(unsigned byte) {
    return byte >= kFirstTrail && byte <= kLastTrail && byte != 0x7F;
}

// The two-byte part of code page 936 in both directions; 0 is no character.
class CodeTable {
  public:
    CodeTable() : m_toUnicode((kLastLead - kFirstLead + 1) * kTrails), m_fromUnicode(0x10000) {
        FillFromSystem();
        FillUserArea(0xAA, 0xAF, 0xA1, 0xFE, 0xE000);
        FillUserArea(0xF8, 0xFE, 0xA1, 0xFE, 0xE234);
        FillUserArea(0xA1, 0xA7, 0x40, 0xA0, 0xE4C6);
    }

    char32_t ToUnicode(unsigned lead, unsigned trail) const { return m_toUnicode[Index(lead, trail)]; }
    /// Lead byte in the high half; 0 when there is none.
    unsigned FromUnicode(char32_t c) const { return c < m_fromUnicode.size() ? m_fromUnicode[c] : 0U; }

  private:
    static std::size_t Index(unsigned lead, unsigned trail) {
        return (lead - kFirstLead) * kTrails + (trail - kFirstTrail);
    }
    void Set(unsigned lead, unsigned trail, char32_t c) {
        m_toUnicode[Index(lead, trail)] = static_cast<char16_t>(c);
        m_fromUnicode[c] = static_cast<std::uint16_t>(lead << 8 | trail);
    }
    void FillUserArea(unsigned firstLead, unsigned lastLead, unsigned firstTrail, unsigned lastTrail, char32_t c) {
        for (unsigned lead = firstLead; lead <= lastLead; ++lead) {
            for (unsigned trail = firstTrail; trail <= lastTrail; ++trail) {
                if (IsTrailByte(trail)) Set(lead, trail, c++);
            }
        }
    }
    void FillFromSystem() {
        const iconv_t converter = iconv_open("UTF-32LE", "CP936");
        if (converter == reinterpret_cast<iconv_t>(-1)) return;
        for (unsigned lead = kFirstLead; lead <= kLastLead; ++lead) {
            for (unsigned trail = kFirstTrail; trail <= kLastTrail; ++trail) Convert(converter, lead, trail);
        }
        iconv_close(converter);
    }
    void Convert(iconv_t converter, unsigned lead, unsigned trail) {
        char in[2] = {static_cast<char>(lead), static_cast<char>(trail)};
        unsigned char out[8] = {};
        char *inNext = in;
        char *outNext = reinterpret_cast<char *>(out);
        std::size_t inLeft = 2;
        std::size_t outLeft = sizeof out;
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        if (iconv(converter, &inNext, &inLeft, &outNext, &outLeft) != 0 || inLeft != 0 || outLeft != 4) return;
        if (out[2] == 0 && out[3] == 0) Set(lead, trail, out[0] | static_cast<char32_t>(out[1]) << 8);
    }

    std::vector<char16_t> m_toUnicode;
    std::vector<std::uint16_t> m_fromUnicode;
};

const CodeTable &Table() {
    static const CodeTable table;
    return table;
}

// Bytes below 0x80 from the start on.
std::size_t AsciiPrefix(std::string_view text) {
    std::size_t length = 0;
    for (; length + sizeof(std::uint64_t) <= text.size(); length += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + length, sizeof word);
        if ((word & 0x8080808080808080U) != 0) break;
    }
    while (length < text.size() && static_cast<unsigned char>(text[length]) < 0x80) ++length;
    return length;
}

void AppendUtf8(std::string &out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
        return;
    }
    if (c < 0x800) {
        out += static_cast<char>(0xC0 | c >> 6);
    } else {
        if (c < 0x10000) {
            out += static_cast<char>(0xE0 | c >> 12);
        } else {
            out += static_cast<char>(0xF0 | c >> 18);
            out += static_cast<char>(0x80 | (c >> 12 & 0x3F));
        }
        out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
    }
    out += static_cast<char>(0x80 | (c & 0x3F));
}

// Takes one character off the front of UTF-8 text; an invalid sequence is one byte, with the answer kReplacement and
// `valid` false.
char32_t TakeUtf8(std::string_view &text, bool &valid) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned first = byte(0);
    const std::size_t length = first < 0x80 ? 1 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    char32_t c = length == 1 ? first : first & (0xFFU >> (length + 1));
    valid = first < 0x80 || (first >= 0xC2 && first <= 0xF4 && text.size() >= length);
    for (std::size_t i = 1; valid && i < length; ++i) {
        valid = (byte(i) & 0xC0) == 0x80;
        c = c << 6 | (byte(i) & 0x3F);
    }
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    valid = valid && c >= kSmallest[length] && c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
    text.remove_prefix(valid ? length : 1);
    return valid ? c : kReplacement;
}

// Takes one character off the front of GBK text; what is none gives kReplacement.
char32_t TakeGbk(std::string_view &text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const bool isPair = IsLeadByte(text[0]) && text.size() > 1 && IsTrailByte(static_cast<unsigned char>(text[1]));
    const char32_t c = lead < 0x80    ? lead
                       : isPair       ? Table().ToUnicode(lead, static_cast<unsigned char>(text[1]))
                       : lead == 0x80 ? kEuro
                                      : 0;
    text.remove_prefix(isPair ? 2 : 1);
    return c != 0 || lead == 0 ? c : kReplacement;
}

// Collects GBK text character by character and counts what it lacks.
class GbkWriter {
  public:
    /// `room`: bytes that the characters with a code of their own take at most.
    explicit GbkWriter(std::size_t room) : m_text(room, '\0') {}

    void AppendAscii(std::string_view run) { m_length += run.copy(m_text.data() + m_length, run.size()); }
    void Append(char32_t c) {
        if (!AppendExact(c)) AppendSubstitute(c);
    }
    void AppendUnknown() {
        AppendMore("?");
        ++m_replaced;
    }
    CString Finish(int *replaced) {
        if (replaced) *replaced += m_replaced;
        m_text.resize(m_length);
        return CString(std::move(m_text));
    }

  private:
    bool AppendExact(char32_t c) {
        if (c < 0x80) {
            m_text[m_length++] = static_cast<char>(c);
        } else if (const unsigned code = m_table.FromUnicode(c)) {
            m_text[m_length] = static_cast<char>(code >> 8);
            m_text[m_length + 1] = static_cast<char>(code & 0xFF);
            m_length += 2;
        } else if (c == kEuro) {
            m_text[m_length++] = '\x80';
        } else {
            return false;
        }
        return true;
    }
    // Text beyond the room reckoned with.
    void AppendMore(std::string_view text) {
        m_text.resize(m_text.size() + text.size());
        m_length += text.copy(m_text.data() + m_length, text.size());
    }
    void AppendSubstitute(char32_t c) {
        bool found = false;
        const std::string_view form = Transliterate(c, found);
        if (!found) return AppendUnknown();
        ++m_replaced;
        AppendMore(FromUtf8(form).View());
    }

    const CodeTable &m_table = Table();
    std::string m_text;
    std::size_t m_length = 0;
    int m_replaced = 0;
};

// Most of the text that is not ASCII: three bytes each.
bool TakeThreeByteCharacter(std::string_view &text, char32_t &c) {
    if (text.size() < 3 || (text[0] & 0xF0) != 0xE0) return false;
    if ((text[1] & 0xC0) != 0x80 || (text[2] & 0xC0) != 0x80) return false;
    c = (text[0] & 0x0FU) << 12 | (text[1] & 0x3FU) << 6 | (text[2] & 0x3FU);
    if (c < 0x800 || (c >= 0xD800 && c <= 0xDFFF)) return false;
    text.remove_prefix(3);
    return true;
}

}  // namespace

CString FromUtf8(std::string_view utf8, int *replaced) {
    if (AsciiPrefix(utf8) == utf8.size()) return CString(utf8);
    GbkWriter writer(utf8.size());
    while (!utf8.empty()) {
        const std::size_t ascii = AsciiPrefix(utf8);
        writer.AppendAscii(utf8.substr(0, ascii));
        utf8.remove_prefix(ascii);
        char32_t c = 0;
        while (TakeThreeByteCharacter(utf8, c)) writer.Append(c);
        if (utf8.empty() || static_cast<unsigned char>(utf8[0]) < 0x80) continue;
        bool valid = true;
        c = TakeUtf8(utf8, valid);
        if (valid) {
            writer.Append(c);
        } else {
            writer.AppendUnknown();
        }
    }
    return writer.Finish(replaced);
}

std::string ToUtf8(std::string_view gbk) {
    const std::size_t prefix = AsciiPrefix(gbk);
    std::string utf8(gbk.substr(0, prefix));
    gbk.remove_prefix(prefix);
    if (gbk.empty()) return utf8;
    const CodeTable &table = Table();
    utf8.reserve(prefix + gbk.size() + gbk.size() / 2 + 4);
    while (!gbk.empty()) {
        const auto lead = static_cast<unsigned char>(gbk[0]);
        const auto trail = static_cast<unsigned char>(gbk.size() > 1 ? gbk[1] : 0);
        const char32_t c = IsLeadByte(gbk[0]) && IsTrailByte(trail) ? table.ToUnicode(lead, trail) : 0;
        if (c >= 0x800) {
            const char bytes[] = {static_cast<char>(0xE0 | c >> 12), static_cast<char>(0x80 | (c >> 6 & 0x3F)),
                                  static_cast<char>(0x80 | (c & 0x3F))};
            utf8.append(bytes, 3);
            gbk.remove_prefix(2);
        } else if (lead < 0x80) {
            const std::size_t ascii = AsciiPrefix(gbk);
            utf8 += gbk.substr(0, ascii);
            gbk.remove_prefix(ascii);
        } else {
            AppendUtf8(utf8, TakeGbk(gbk));
        }
    }
    return utf8;
}

std::wstring WideFromGbk(std::string_view gbk) {
    std::wstring wide;
    wide.reserve(gbk.size());
    while (!gbk.empty()) wide += static_cast<wchar_t>(TakeGbk(gbk));
    return wide;
}

CString GbkFromWide(std::wstring_view wide, int *replaced) {
    GbkWriter writer(wide.size() * 2);
    for (const wchar_t c : wide) writer.Append(static_cast<char32_t>(c));
    return writer.Finish(replaced);
}

std::u16string Utf16FromGbk(std::string_view gbk) {
    std::u16string text;
    text.reserve(gbk.size());
    // No character of GBK lies above the first plane.
    while (!gbk.empty()) text += static_cast<char16_t>(TakeGbk(gbk));
    return text;
}

CString GbkFromUtf16(std::u16string_view text, int *replaced) {
    GbkWriter writer(text.size() * 2);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isPair = (text[i] & 0xFC00) == 0xD800 && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00;
        if (!isPair) {
            writer.Append(text[i]);
            continue;
        }
        writer.Append(0x10000 + ((text[i] & 0x3FFU) << 10 | (text[i + 1] & 0x3FFU)));
        ++i;
    }
    return writer.Finish(replaced);
}

std::string SystemPath(const CString &path) {
    std::string system = ToUtf8(path.GetString());
    std::replace(system.begin(), system.end(), '\\', '/');
    return system;
}

CString PlatformPath(std::string_view systemPath) {
    std::string platform(FromUtf8(systemPath).View());
    std::replace(platform.begin(), platform.end(), '/', '\\');
    return CString(std::move(platform));
}

}  // namespace ktl
