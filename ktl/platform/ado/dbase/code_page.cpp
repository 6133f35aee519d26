#include "ktl/platform/ado/dbase/code_page.h"

#include <iconv.h>

#include <algorithm>
#include <array>

#include "ktl/platform/ado/dbase/layout.h"
#include "ktl/platform/ado/names.h"
#include "ktl/platform/encoding.h"

namespace ktl::ado::dbase {

namespace {

struct Mark {
    std::uint8_t mark;
    const char *name;
};

constexpr Mark kMarks[] = {
    {0x01, "CP437"},  {0x02, "CP850"},  {0x03, "CP1252"}, {0x04, "MACINTOSH"}, {0x08, "CP865"},  {0x09, "CP437"},
    {0x0A, "CP850"},  {0x0B, "CP437"},  {0x0D, "CP437"},  {0x0E, "CP850"},     {0x0F, "CP437"},  {0x10, "CP850"},
    {0x11, "CP437"},  {0x12, "CP850"},  {0x13, "CP932"},  {0x14, "CP850"},     {0x15, "CP437"},  {0x16, "CP850"},
    {0x17, "CP865"},  {0x18, "CP437"},  {0x19, "CP437"},  {0x1A, "CP850"},     {0x1B, "CP437"},  {0x1C, "CP863"},
    {0x1D, "CP850"},  {0x1F, "CP852"},  {0x22, "CP852"},  {0x23, "CP852"},     {0x24, "CP860"},  {0x25, "CP850"},
    {0x26, "CP866"},  {0x37, "CP850"},  {0x40, "CP852"},  {0x4E, "CP949"},     {0x4F, "BIG5"},   {0x50, "CP874"},
    {0x58, "CP1252"}, {0x59, "CP1252"}, {0x64, "CP852"},  {0x65, "CP866"},     {0x66, "CP865"},  {0x67, "CP861"},
    {0x6A, "CP737"},  {0x6B, "CP857"},  {0x6C, "CP863"},  {0x78, "BIG5"},      {0x79, "CP949"},  {0x7B, "CP932"},
    {0x7C, "CP874"},  {0x7D, "CP1255"}, {0x7E, "CP1256"}, {0x86, "CP737"},     {0x87, "CP852"},  {0x88, "CP857"},
    {0xC8, "CP1250"}, {0xC9, "CP1251"}, {0xCA, "CP1254"}, {0xCB, "CP1253"},    {0xCC, "CP1257"},
};

/// One direction of a conversion.
class Converter {
  public:
    Converter(const char *to, const char *from) : m_handle(iconv_open(to, from)) {}
    Converter(const Converter &) = delete;
    Converter &operator=(const Converter &) = delete;
    ~Converter() {
        if (IsGood()) iconv_close(m_handle);
    }
    bool IsGood() const { return m_handle != reinterpret_cast<iconv_t>(-1); }

    /// What cannot be converted becomes '?', a byte of the source at a time, or a whole character of UTF-8.
    std::string Convert(std::string_view text, bool sourceIsUtf8) const {
        std::string result;
        std::string source(text);
        char *in = source.data();
        std::size_t left = source.size();
        iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
        while (left > 0) {
            std::array<char, 512> buffer;
            char *out = buffer.data();
            std::size_t room = buffer.size();
            const std::size_t before = left;
            const std::size_t status = iconv(m_handle, &in, &left, &out, &room);
            result.append(buffer.data(), static_cast<std::size_t>(out - buffer.data()));
            if (status != static_cast<std::size_t>(-1)) break;
            if (room < 16 && left < before) continue;
            result += '?';
            do {
                ++in;
                --left;
            } while (sourceIsUtf8 && left > 0 && (static_cast<unsigned char>(*in) & 0xC0U) == 0x80U);
        }
        return result;
    }

  private:
    iconv_t m_handle;
};

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// iconv's name for the number of a code page or an ISO part, as .cpg files give it.
std::string NameOfNumber(const std::string &digits) {
    if (digits == "65001") return "UTF-8";
    if (digits.rfind("8859", 0) == 0 && digits.size() > 4) return "ISO-8859-" + digits.substr(4);
    return "CP" + digits;
}

}  // namespace

class CodePage::Converters {
  public:
    explicit Converters(const std::string &name) : toUtf8("UTF-8", name.c_str()), fromUtf8(name.c_str(), "UTF-8") {}
    Converter toUtf8;
    Converter fromUtf8;
};

CodePage::CodePage() = default;
CodePage::~CodePage() = default;
CodePage::CodePage(CodePage &&) noexcept = default;
CodePage &CodePage::operator=(CodePage &&) noexcept = default;

CodePage CodePage::FromSystemName(const std::string &name) {
    CodePage page;
    auto converters = std::make_unique<Converters>(name);
    if (converters->toUtf8.IsGood() && converters->fromUtf8.IsGood()) page.m_converters = std::move(converters);
    return page;
}

CodePage CodePage::FromMark(std::uint8_t mark) {
    for (const Mark &known : kMarks) {
        if (known.mark == mark) return FromSystemName(known.name);
    }
    return {};
}

CodePage CodePage::FromName(std::string_view name) {
    std::string folded;
    std::string digits;
    for (const char c : FoldedName(name)) {
        if (static_cast<unsigned char>(c) <= ' ' && folded.empty()) continue;
        if (static_cast<unsigned char>(c) < ' ') break;
        folded += c;
        if (c >= '0' && c <= '9') digits += c;
    }
    while (!folded.empty() && folded.back() == ' ') folded.pop_back();
    if (folded.rfind("ldid/", 0) == 0) return FromMark(static_cast<std::uint8_t>(std::atoi(digits.c_str())));
    if (folded == "utf-8" || folded == "utf8") return FromSystemName("UTF-8");
    if (folded.empty() || folded.rfind("gb", 0) == 0 || digits == "936") return {};
    const std::string number = folded.substr(0, folded.size() - digits.size());
    const bool numbered =
        !digits.empty() && (number.empty() || number == "cp" || number == "ansi " || number == "oem " ||
                            number == "windows-" || number == "iso " || number == "ibm");
    CodePage page = FromSystemName(numbered ? NameOfNumber(digits) : folded);
    return page;
}

std::string CodePage::ToGbk(std::string_view text) const {
    if (!m_converters || IsAscii(text)) return std::string(text);
    return FromUtf8(m_converters->toUtf8.Convert(text, false)).GetString();
}

std::string CodePage::FromGbk(std::string_view gbk, std::size_t size) const {
    if (!m_converters || IsAscii(gbk)) return std::string(CutText(gbk, size));
    std::string text = m_converters->fromUtf8.Convert(ToUtf8(gbk), true);
    while (text.size() > size && !gbk.empty()) {
        gbk = CutText(gbk, gbk.size() - 1);
        text = m_converters->fromUtf8.Convert(ToUtf8(gbk), true);
    }
    return text;
}

}  // namespace ktl::ado::dbase
