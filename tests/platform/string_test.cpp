#include "ktl/platform/string.h"

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ktl/platform/encoding.h"
#include "ktl/platform/exception.h"
#include "ktl/platform/parse.h"
#include "tests/support/comma_locale.h"

namespace {

// 誠 is D5 5C, 亅 is 81 7C, 乛 is 81 5B: second bytes with the codes of '\', '|' and '['.
const CString kBackslash = ktl::FromUtf8("誠");
const CString kBar = ktl::FromUtf8("亅");

template <class... Args>
std::string Formatted(const char *format, Args... args) {
    CString text;
    text.Format(format, args...);
    return std::string(text.View());
}

}  // namespace

TEST(StringFormat, PrintsAsThePlatformDoes) {
    const char *const null = nullptr;
    int untouched = 77;
    const std::vector<std::pair<std::string, std::string>> cases = {
        {Formatted("异常:%.6d|%d", 42, -7), "异常:000042|-7"},
        {Formatted("%5d|%-5d|%05d|%+d|% d", 42, 42, -42, 42, 42), "   42|42   |-0042|+42| 42"},
        {Formatted("%x %X %#x %#o %o", 255, 255, 255, 8, 8), "ff FF 0xff 010 10"},
        {Formatted("%I64d %lld %llu", 1LL << 40, -(1LL << 40), ~0ULL),
         "1099511627776 -1099511627776 18446744073709551615"},
        {Formatted("%ld %lu", 7, 8u), "7 8"},
        {Formatted("%hd %hhu %u", 65537, 258, -1), "1 2 4294967295"},
        {Formatted("%d %d", std::numeric_limits<int>::min(), std::numeric_limits<int>::max()),
         "-2147483648 2147483647"},
        {Formatted("[%.0d][%.3d][%5.3d]", 0, 5, 5), "[][005][  005]"},
        {Formatted("%s|%.2s|%5s|%-5s|", "abc", "abc", "ab", "ab"), "abc|ab|   ab|ab   |"},
        {Formatted("%s %*d %.*f", null, 4, 7, 2, 1.5), "(null)    7 1.50"},
        {Formatted("%c%c%%", 'a', 'b'), "ab%"},
        {Formatted("%.2f %.0f %.0f %.0f", 0.125, 0.5, 2.5, -0.0), "0.12 0 2 -0"},
        {Formatted("%f %08.3f %+.1f %e %G", 1.0, -3.14159, 2.0, 12345.678, 1e-10),
         "1.000000 -003.142 +2.0 1.234568e+04 1E-10"},
        {Formatted("%g %g %#.3g %.10g", 100000.0, 1e15, 1.0, 0.1), "100000 1e+15 1.00 0.1"},
        {Formatted("%f %5.1f|%f", std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                   std::numeric_limits<double>::quiet_NaN()),
         "inf  -inf|nan"},
        {Formatted("%.3f", 1e300).substr(0, 8), "10000000"},
        {Formatted("%a", 1.0), "0x1p+0"},
        {Formatted("%p", static_cast<void *>(nullptr)), "0000000000000000"},
        // Wide text becomes GBK; nothing is written through an argument.
        {Formatted("%S|%ls|%C", L"文", L"誠", L'中'), "\xCE\xC4|\xD5\\|\xD6\xD0"},
        {Formatted("ab%ncd%d", &untouched, 1), "abcd1"},
        // What is no conversion loses its percent sign only.
        {Formatted("[s%] datetime, %d", 5), "[s] datetime, 5"},
        {Formatted("100%") + Formatted("%-5]x") + Formatted("%5") + Formatted("%y%k"), "100]xyk"},
    };
    for (const auto &[actual, expected] : cases) EXPECT_EQ(actual, expected);
    EXPECT_EQ(untouched, 77);
}

TEST(StringFormat, IgnoresTheLocale) {
    const ktl::test::CommaLocale locale;
    if (!locale.IsInForce()) GTEST_SKIP() << "no locale with a comma can be made here";
    EXPECT_EQ(Formatted("%.2f %g %#g %a", 1.5, 2.5, 3.5, 0.75), "1.50 2.5 3.50000 0x1.8p-1");
    EXPECT_EQ(ktl::ParseDouble("2.5"), 2.5);
}

TEST(StringFormat, MayPrintItsOwnText) {
    CString text("abc");
    text.Format("%s-%s", text.GetString(), text.GetString());
    EXPECT_EQ(text, "abc-abc");
    text.AppendFormat("%s", text.GetString());
    EXPECT_EQ(text, "abc-abcabc-abc");
}

TEST(StringFormat, AHugeFieldDoesNotTakeAllMemory) {
    EXPECT_LE(Formatted("%2000000000d", 1).size(), std::size_t{1} << 20);
    EXPECT_LE(Formatted("%.*f", std::numeric_limits<int>::max(), 0.5).size(), (std::size_t{1} << 20) + 400);
}

TEST(StringFind, TrailBytesAreNoLetters) {
    const CString path = kBackslash + "\\" + kBar + "|a";  // D5 5C 5C 81 7C 7C 61
    const CString across("\xB0\xD5\x5C");                  // the bytes of 誠 in two characters
    const CString lone("ab\xD5");                          // a first byte without its second
    const std::pair<int, int> cases[] = {
        {path.Find('\\'), 2},        {path.ReverseFind('\\'), 2},   {path.Find("|"), 5},
        {path.FindOneOf("|\\"), 2},  {path.Find("\\", 3), -1},      {kBackslash.ReverseFind('\\'), -1},
        {kBackslash.Find("\\"), -1}, {across.Find(kBackslash), -1}, {across.Find('\\'), 2},
        {lone.Find("\xD5"), 2},      {lone.ReverseFind('\xD5'), 2}, {lone.Find('x'), -1}};
    for (const auto &[found, expected] : cases) EXPECT_EQ(found, expected);
    EXPECT_EQ(CString(lone).MakeLower(), lone);
}

TEST(StringFind, PositionsAreTakenAsTheyCome) {
    struct Case {
        const char *text, *needle;
        int start, expected;
    };
    const Case cases[] = {
        {"abcabc", "c", 3, 5}, {"abc", "d", 0, -1},     {"abc", "a", -1, -1}, {"abc", "", 3, 3},
        {"abc", "", 4, -1},    {"abc", nullptr, 0, -1}, {"", "", 0, 0},       {"aab", "ab", 0, 1},
    };
    for (const Case &c : cases) EXPECT_EQ(CString(c.text).Find(c.needle, c.start), c.expected) << c.text;
    EXPECT_EQ(CString("abc").Find('c', 3), -1);
    EXPECT_EQ(CString("abc").FindOneOf(""), -1);
}

TEST(StringCut, PositionsAreClamped) {
    const CString text("abcdef");
    const std::pair<CString, const char *> cases[] = {
        {text.Left(-1), ""},        {text.Left(99), "abcdef"}, {text.Right(2), "ef"}, {text.Right(-2), ""},
        {text.Right(99), "abcdef"}, {text.Mid(-3, 2), "ab"},   {text.Mid(2, -1), ""}, {text.Mid(4, 99), "ef"},
        {text.Mid(6), ""},          {text.Mid(7, 2), ""}};
    for (const auto &[part, expected] : cases) EXPECT_EQ(part, expected);
}

TEST(StringAccess, OnlyIndexesThrow) {
    CString text("ab");
    EXPECT_EQ(text[2], '\0');
    EXPECT_THROW((void)text[3], CInvalidArgException);
    EXPECT_THROW((void)text.GetAt(-1), CInvalidArgException);
    EXPECT_THROW(text.SetAt(2, 'x'), CInvalidArgException);
    EXPECT_EQ(text.Insert(-5, "x"), 3);
    EXPECT_EQ(text.Insert(99, "y"), 4);
    EXPECT_EQ(text, "xaby");
    EXPECT_EQ(text.Delete(-1, 1), 3);
    EXPECT_EQ(text.Delete(2, 99), 2);
    EXPECT_EQ(text.Delete(7), 2);
    EXPECT_EQ(text, "ab");
}

TEST(StringTrim, SixBlanksAndNoFullWidthSpace) {
    CString text("\t\n\v\f\r a b \r\n");
    EXPECT_EQ(text.Trim(), "a b");
    EXPECT_EQ(CString("\xA1\xA1x\xA1\xA1").Trim(), "\xA1\xA1x\xA1\xA1");
    EXPECT_EQ(CString(" \t").Trim(), "");
    EXPECT_EQ((kBackslash + "\\\\").TrimRight('\\'), kBackslash);
    EXPECT_EQ(CString("xxaxx").TrimLeft('x'), "axx");
}

TEST(StringFold, LettersOnlyAndNeverATrailByte) {
    // 81 5F and 81 7A are characters; the second byte of the latter is 'z'.
    EXPECT_EQ(CString("\x81_ZYX[\x81Z").MakeLower(), "\x81_zyx[\x81Z");
    EXPECT_EQ(CString("\x81zZy{").MakeUpper(), "\x81zZY{");
    EXPECT_EQ(ktl::FromUtf8("ＡＺ").MakeLower(), ktl::FromUtf8("ａｚ"));
    EXPECT_EQ(CString("abC").CompareNoCase("ABc"), 0);
    EXPECT_NE(CString("\x81Z").CompareNoCase("\x81z"), 0);
    // On lower case: '_' lies before the letters.
    EXPECT_LT(CString("a_").CompareNoCase("aB"), 0);
    EXPECT_GT(CString("a_").Compare("aB"), 0);
    EXPECT_LT(CString("ab").CompareNoCase("ABC"), 0);
}

TEST(StringReplace, CountsAndDoesNotRescan) {
    CString text("aXaXa");
    EXPECT_EQ(text.Replace("a", "aa"), 3);
    EXPECT_EQ(text, "aaXaaXaa");
    EXPECT_EQ(text.Replace("", "y"), 0);
    EXPECT_EQ(text.Replace("aa", nullptr), 3);
    EXPECT_EQ(text, "XX");
    EXPECT_EQ(text.Replace('X', 'X'), 0);
    CString path = kBackslash + "\\a";
    EXPECT_EQ(path.Replace("\\", "/"), 1);
    EXPECT_EQ(path, kBackslash + "/a");
    EXPECT_EQ(path.Replace('/', '\\'), 1);
    EXPECT_EQ(path.Remove('\\'), 1);
    EXPECT_EQ(path, kBackslash + "a");
}

TEST(StringTokenize, EmptyFieldsAreNotReturned) {
    const CString text("|" + kBar + "||b|");
    std::vector<CString> tokens;
    int start = 0;
    for (CString token = text.Tokenize("|", start); start >= 0; token = text.Tokenize("|", start))
        tokens.push_back(token);
    ASSERT_EQ(tokens.size(), 2U);
    EXPECT_EQ(tokens[0], kBar);
    EXPECT_EQ(tokens[1], "b");
}

TEST(StringNul, IsKeptByBytesAndEndsAComparison) {
    CString text("ab\0cd", 5);
    EXPECT_EQ(text.GetLength(), 5);
    EXPECT_EQ(text, "ab");
    EXPECT_EQ((text + "e").GetLength(), 6);
    EXPECT_EQ(text.Mid(2).GetLength(), 3);
    EXPECT_EQ(Formatted("%s", text.GetString()), "ab");
}

TEST(StringBuffer, LengthFollowsTheTerminator) {
    CString text("abc");
    char *buffer = text.GetBuffer(100);
    EXPECT_STREQ(buffer, "abc");
    buffer[1] = '\0';
    text.ReleaseBuffer();
    EXPECT_EQ(text.GetLength(), 1);
    EXPECT_THROW(text.ReleaseBuffer(2), CInvalidArgException);
    text += text;
    EXPECT_EQ(text, "aa");
    EXPECT_TRUE(CString("b") > CString("a") && CString("b") > "a" && CString("a") <= "a");
}

TEST(Parse, TakesTheLeadingNumber) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const std::pair<const char *, double> doubles[] = {
        {" 1.5abc", 1.5}, {"+2", 2},  {"-.5", -0.5},       {"abc", 0}, {"", 0},     {".", 0},      {"-", 0},
        {"1e3x", 1000},   {"1e", 1},  {"inf", 0},          {"nan", 0}, {"0x10", 0}, {"1e-400", 0}, {"\t\n7", 7},
        {"--5", 0},       {"1,5", 1}, {"1e400", kInfinity}};
    for (const auto &[text, expected] : doubles) EXPECT_EQ(ktl::ParseDouble(text), expected) << text;
    const std::string nines(20, '9');
    const std::pair<std::string, int> ints[] = {
        {" 12x", 12}, {"-7", -7}, {"+3", 3}, {"x", 0}, {nines, INT32_MAX}, {"-" + nines, INT32_MIN},
    };
    for (const auto &[text, expected] : ints) EXPECT_EQ(ktl::ParseInt(text), expected) << text;
}
