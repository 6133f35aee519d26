#include "ktl/platform/format.h"

#include <locale.h>
#include <clocale>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "ktl/platform/encoding.h"

namespace ktl {
namespace {

// A va_list that can be handed by reference.
struct Arguments {
    va_list list;
};

enum class Width { kDefault, kByte, kShort, kLong, kLongLong, kWideChar };

// One conversion, as it stands between '%' and its letter.
struct Conversion {
    bool leftAligned = false;
    bool plus = false;
    bool space = false;
    bool zero = false;
    bool alternate = false;
    int width = 0;
    int precision = -1;
    Width size = Width::kDefault;
};

// Wider fields and longer fractions than any real text has; they keep a damaged format from taking all memory.
constexpr int kMaxField = 1 << 20;

int TakeNumber(std::string_view &text) {
    int number = 0;
    while (!text.empty() && text[0] >= '0' && text[0] <= '9') {
        number = std::min(number * 10 + (text[0] - '0'), kMaxField);
        text.remove_prefix(1);
    }
    return number;
}

bool TakePrefix(std::string_view &text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

void TakeFlags(std::string_view &text, Conversion &conversion) {
    for (; !text.empty(); text.remove_prefix(1)) {
        switch (text[0]) {
            case '-':
                conversion.leftAligned = true;
                break;
            case '+':
                conversion.plus = true;
                break;
            case ' ':
                conversion.space = true;
                break;
            case '0':
                conversion.zero = true;
                break;
            case '#':
                conversion.alternate = true;
                break;
            default:
                return;
        }
    }
}

void TakeWidth(std::string_view &text, Conversion &conversion, Arguments &args) {
    if (!TakePrefix(text, "*")) {
        conversion.width = TakeNumber(text);
        return;
    }
    const int width = va_arg(args.list, int);
    conversion.leftAligned = conversion.leftAligned || width < 0;
    conversion.width = std::min(width < 0 ? -std::max(width, -kMaxField) : width, kMaxField);
}

void TakePrecision(std::string_view &text, Conversion &conversion, Arguments &args) {
    if (!TakePrefix(text, ".")) return;
    conversion.precision = TakePrefix(text, "*") ? std::clamp(va_arg(args.list, int), -1, kMaxField) : TakeNumber(text);
}

void TakeSize(std::string_view &text, Conversion &conversion) {
    struct Prefix {
        std::string_view text;
        Width size;
    };
    // The longer ones first. `l` is 4 bytes for numbers, as on the platform; `z`, `t` and `j` are this machine's 8.
    static constexpr Prefix kPrefixes[] = {
        {"I64", Width::kLongLong}, {"I32", Width::kDefault}, {"ll", Width::kLongLong}, {"hh", Width::kByte},
        {"l", Width::kLong},       {"h", Width::kShort},     {"w", Width::kWideChar},  {"z", Width::kLongLong},
        {"j", Width::kLongLong},   {"t", Width::kLongLong},  {"I", Width::kLongLong},  {"q", Width::kLongLong},
    };
    if (text.empty() || std::string_view("Ilhwzjtq").find(text[0]) == std::string_view::npos) return;
    for (const Prefix &prefix : kPrefixes) {
        if (!TakePrefix(text, prefix.text)) continue;
        conversion.size = prefix.size;
        return;
    }
}

// Puts sign or prefix and digits into the field.
void AppendNumber(std::string &out, const Conversion &conversion, std::string_view sign, std::string_view digits,
                  bool zeros) {
    const std::size_t length = sign.size() + digits.size();
    const auto width = static_cast<std::size_t>(conversion.width);
    const std::size_t fill = width > length ? width - length : 0;
    if (!conversion.leftAligned && !zeros) out.append(fill, ' ');
    out += sign;
    if (!conversion.leftAligned && zeros) out.append(fill, '0');
    out += digits;
    if (conversion.leftAligned) out.append(fill, ' ');
}

std::string_view SignOf(const Conversion &conversion, bool negative) {
    return negative ? "-" : conversion.plus ? "+" : conversion.space ? " " : "";
}

void AppendInteger(std::string &out, const Conversion &conversion, std::string_view sign, std::uint64_t value, int base,
                   bool upper) {
    char buffer[24];
    char *end = std::to_chars(buffer, buffer + sizeof buffer, value, base).ptr;
    if (upper) std::transform(buffer, end, buffer, [](char c) { return c >= 'a' ? static_cast<char>(c - 32) : c; });
    std::string digits(buffer, end);
    if (conversion.precision == 0 && value == 0) digits.clear();
    if (conversion.precision > static_cast<int>(digits.size())) {
        digits.insert(0, static_cast<std::size_t>(conversion.precision) - digits.size(), '0');
    }
    if (conversion.alternate && base == 8 && !digits.starts_with('0')) digits.insert(0, 1, '0');
    AppendNumber(out, conversion, sign, digits, conversion.zero && conversion.precision < 0);
}

void AppendSigned(std::string &out, const Conversion &conversion, Arguments &args) {
    std::int64_t value = 0;
    switch (conversion.size) {
        case Width::kLongLong:
            value = va_arg(args.list, long long);
            break;
        case Width::kByte:
            value = static_cast<signed char>(va_arg(args.list, int));
            break;
        case Width::kShort:
            value = static_cast<short>(va_arg(args.list, int));
            break;
        default:
            value = va_arg(args.list, int);
            break;
    }
    const auto bits = static_cast<std::uint64_t>(value);
    AppendInteger(out, conversion, SignOf(conversion, value < 0), value < 0 ? 0 - bits : bits, 10, false);
}

void AppendUnsigned(std::string &out, const Conversion &conversion, Arguments &args, char letter) {
    std::uint64_t value = 0;
    switch (conversion.size) {
        case Width::kLongLong:
            value = va_arg(args.list, unsigned long long);
            break;
        case Width::kByte:
            value = static_cast<unsigned char>(va_arg(args.list, int));
            break;
        case Width::kShort:
            value = static_cast<unsigned short>(va_arg(args.list, int));
            break;
        default:
            value = va_arg(args.list, unsigned);
            break;
    }
    const bool isHex = letter == 'x' || letter == 'X';
    const std::string_view prefix = !isHex || !conversion.alternate || value == 0 ? "" : letter == 'x' ? "0x" : "0X";
    AppendInteger(out, conversion, prefix, value, isHex ? 16 : letter == 'o' ? 8 : 10, letter == 'X');
}

void AppendPointer(std::string &out, Conversion conversion, Arguments &args) {
    conversion.precision = 16;
    AppendInteger(out, conversion, "", reinterpret_cast<std::uintptr_t>(va_arg(args.list, void *)), 16, true);
}

// The digits of a finite number without its sign, as the C locale's printf gives them.
std::string PrintedDigits(double magnitude, const Conversion &conversion, char letter) {
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    const char format[] = {'%', '#', '.', '*', letter, '\0'};
    const char plain[] = {'%', '.', '*', letter, '\0'};
    const char *chosen = conversion.alternate ? format : plain;
    const locale_t before = uselocale(cLocale);
    std::string digits(
        static_cast<std::size_t>(std::max(0, std::snprintf(nullptr, 0, chosen, conversion.precision, magnitude))),
        '\0');
    std::snprintf(digits.data(), digits.size() + 1, chosen, conversion.precision, magnitude);
    uselocale(before);
    return digits;
}

// Room for any double with a usual precision.
constexpr int kUsualPrecision = 40;
constexpr std::size_t kLongestWhole = 330;

std::string LongDigits(double magnitude, std::chars_format form, int precision) {
    std::string digits(static_cast<std::size_t>(precision) + kLongestWhole, '\0');
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), magnitude, form, precision);
    digits.resize(static_cast<std::size_t>(result.ptr - digits.data()));
    return digits;
}

// The digits without a sign, in the buffer or in `longer`.
std::string_view FloatDigits(double magnitude, const Conversion &conversion, char letter, char *buffer,
                             std::string &longer) {
    const char lower = static_cast<char>(letter | 0x20);
    if (!std::isfinite(magnitude)) return std::isnan(magnitude) ? "nan" : "inf";
    // The plain forms are frequent, and to_chars gives printf's digits for them faster.
    if (lower == 'a' || conversion.alternate) return longer = PrintedDigits(magnitude, conversion, lower);
    const auto form = lower == 'e'   ? std::chars_format::scientific
                      : lower == 'f' ? std::chars_format::fixed
                                     : std::chars_format::general;
    const int precision = conversion.precision < 0 ? 6 : conversion.precision;
    if (precision > kUsualPrecision) return longer = LongDigits(magnitude, form, precision);
    char *const end = buffer + kUsualPrecision + kLongestWhole;
    return {buffer, static_cast<std::size_t>(std::to_chars(buffer, end, magnitude, form, precision).ptr - buffer)};
}

void AppendFloat(std::string &out, const Conversion &conversion, Arguments &args, char letter) {
    const double value = va_arg(args.list, double);
    char buffer[kUsualPrecision + kLongestWhole];
    std::string longer;
    std::string_view digits = FloatDigits(std::fabs(value), conversion, letter, buffer, longer);
    std::string_view sign = SignOf(conversion, std::signbit(value) && !std::isnan(value));
    std::string upper;
    if (letter < 'a') {
        upper = digits;
        std::transform(upper.begin(), upper.end(), upper.begin(),
                       [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
        digits = upper;
    }
    std::string prefix;
    if ((letter | 0x20) == 'a' && std::isfinite(value)) {
        prefix = std::string(sign) + std::string(digits.substr(0, 2));
        sign = prefix;
        digits.remove_prefix(2);
    }
    AppendNumber(out, conversion, sign, digits, conversion.zero && std::isfinite(value));
}

void AppendText(std::string &out, const Conversion &conversion, std::string_view text) {
    if (conversion.precision >= 0) text = text.substr(0, static_cast<std::size_t>(conversion.precision));
    AppendNumber(out, conversion, "", text, conversion.zero);
}

// With a precision the text need not be terminated.
template <class Char>
std::basic_string_view<Char> BoundedText(const Char *text, int precision) {
    if (precision < 0) return text;
    std::size_t length = 0;
    while (length < static_cast<std::size_t>(precision) && text[length] != 0) ++length;
    return {text, length};
}

bool IsWide(const Conversion &conversion, char letter) {
    const bool isCapital = letter == 'S' || letter == 'C';
    if (conversion.size == Width::kLong || conversion.size == Width::kWideChar) return true;
    return isCapital && conversion.size != Width::kShort;
}

void AppendString(std::string &out, const Conversion &conversion, Arguments &args, char letter) {
    const void *pointer = va_arg(args.list, const void *);
    if (!pointer) return AppendText(out, conversion, "(null)");
    if (!IsWide(conversion, letter)) {
        return AppendText(out, conversion, BoundedText(static_cast<const char *>(pointer), conversion.precision));
    }
    AppendText(out, conversion,
               GbkFromWide(BoundedText(static_cast<const wchar_t *>(pointer), conversion.precision)).View());
}

void AppendChar(std::string &out, Conversion conversion, Arguments &args, char letter) {
    const int value = va_arg(args.list, int);
    conversion.precision = -1;
    if (IsWide(conversion, letter)) {
        const auto wide = static_cast<wchar_t>(value);
        return AppendText(out, conversion, GbkFromWide(std::wstring_view(&wide, 1)).View());
    }
    const char ch = static_cast<char>(value);
    AppendText(out, conversion, std::string_view(&ch, 1));
}

void AppendConversion(std::string &out, const Conversion &conversion, Arguments &args, char letter) {
    switch (letter) {
        case 'd':
        case 'i':
            return AppendSigned(out, conversion, args);
        case 'u':
        case 'o':
        case 'x':
        case 'X':
            return AppendUnsigned(out, conversion, args, letter);
        case 'f':
        case 'F':
        case 'e':
        case 'E':
        case 'g':
        case 'G':
        case 'a':
        case 'A':
            return AppendFloat(out, conversion, args, letter);
        case 's':
        case 'S':
            return AppendString(out, conversion, args, letter);
        case 'c':
        case 'C':
            return AppendChar(out, conversion, args, letter);
        case 'p':
            return AppendPointer(out, conversion, args);
        case 'n':
            // Writing through an argument is refused; the argument is passed over.
            (void)va_arg(args.list, void *);
            return;
        default:
            out += letter;
    }
}

}  // namespace

std::string FormatText(std::string_view format, va_list list) {
    Arguments args;
    va_copy(args.list, list);
    std::string out;
    out.reserve(format.size() + 32);
    while (!format.empty()) {
        const std::size_t percent = std::min(format.find('%'), format.size());
        out += format.substr(0, percent);
        format.remove_prefix(percent);
        if (!TakePrefix(format, "%")) break;
        Conversion conversion;
        TakeFlags(format, conversion);
        TakeWidth(format, conversion, args);
        TakePrecision(format, conversion, args);
        TakeSize(format, conversion);
        if (format.empty()) break;
        const char letter = format[0];
        format.remove_prefix(1);
        AppendConversion(out, conversion, args, letter);
    }
    va_end(args.list);
    return out;
}

}  // namespace ktl
