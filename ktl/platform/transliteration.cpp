#include "ktl/platform/transliteration.h"

#include <algorithm>
#include <iterator>

namespace ktl {
namespace {

// Base letters by code point. '.' stands for a character that GBK has, '~' for one in kForms, '?' for one without a
// form.
struct LetterRange {
    char32_t first;
    std::string_view letters;
};

constexpr LetterRange kLetters[] = {
    {0x00A0,
     " !c~.~|..~a~~~~-..23'~P.,1o~~~~~AAAAAA~CEEEEIIIIDNOOOOO.OUUUUY~~"
     "..aaaa~c...e..iidn..ooo.o..u.y~yA.AaAaCcCcCcCcDdDdE.EeEeEeE.GgGg"
     "GgGgHhHhIiI.IiIiIi~~JjKkkLlLlLlLlLlN.NnN.nNnO.OoOo~~RrRrRrSsSsSs"
     "SsTtTtTtUuU.UuUuUuUuWwYyYZzZzZzsbBBb??OCcDDDd?EEEFfGG~IIKkl?MNnO"
     "Oo??Pp?????tTtTUuUVYyZz?????????????~~~~~~~~~A.I.O.U.U.U.U.U.eAa"
     "Aa??GgGgKkOoOo??j~~~Gg~?NnAa????AaAaEeEeIiIiOoOoRrRrUuUuSsTt??Hh"
     "?d~~ZzAaEeOoOoOoOoYylntj~~ACcLTsz??BU?EeJj??RrYy"},
    {0x1E00,
     "AaBbBbBbCcDdDdDdDdDdEeEeEeEeEeFfGgHhHhHhHhHhIiIiKkKkKkLlLlLlLlMm"
     "MmMmNnNnNnNnOoOoOoOoPpPpRrRrRrRrSsSsSsSsSsTtTtTtTtUuUuUuUuUuVvVv"
     "WwWwWwWwWwXxXxYyZzZzZzhtwyasss~dAaAaAaAaAaAaAaAaAaAaAaAaEeEeEeE"
     "eEeEeEeEeIiIiOoOoOoOoOoOoOoOoOoOoOoOoUuUuUuUuUuUuUuYyYyYyYy~~????"},
};

struct Form {
    char32_t character;
    std::string_view text;
};

// Sorted by character.
constexpr Form kForms[] = {
    {0x00A3, "GBP"}, {0x00A5, "￥"},  {0x00A9, "(C)"}, {0x00AB, "<<"},  {0x00AC, "￢"},  {0x00AD, ""},
    {0x00AE, "(R)"}, {0x00B5, "μ"},   {0x00BB, ">>"},  {0x00BC, "1/4"}, {0x00BD, "1/2"}, {0x00BE, "3/4"},
    {0x00BF, "?"},   {0x00C6, "AE"},  {0x00DE, "Th"},  {0x00DF, "ss"},  {0x00E6, "ae"},  {0x00FE, "th"},
    {0x0132, "IJ"},  {0x0133, "ij"},  {0x0152, "OE"},  {0x0153, "oe"},  {0x0195, "hv"},  {0x01C4, "DZ"},
    {0x01C5, "Dz"},  {0x01C6, "dz"},  {0x01C7, "LJ"},  {0x01C8, "Lj"},  {0x01C9, "lj"},  {0x01CA, "NJ"},
    {0x01CB, "Nj"},  {0x01CC, "nj"},  {0x01F1, "DZ"},  {0x01F2, "Dz"},  {0x01F3, "dz"},  {0x01F6, "Hv"},
    {0x0222, "OU"},  {0x0223, "ou"},  {0x0238, "db"},  {0x0239, "qp"},  {0x0259, "e"},   {0x02B9, "'"},
    {0x02BA, "''"},  {0x02BB, "'"},   {0x02BC, "'"},   {0x02BD, "'"},   {0x02BE, "'"},   {0x02BF, "'"},
    {0x02C6, "^"},   {0x02C8, "'"},   {0x02DC, "~"},   {0x037E, ";"},   {0x0387, "·"},   {0x0404, "Е"},
    {0x0406, "И"},   {0x0407, "И"},   {0x0454, "е"},   {0x0456, "и"},   {0x0457, "и"},   {0x0490, "Г"},
    {0x0491, "г"},   {0x1E9E, "SS"},  {0x1EFA, "LL"},  {0x1EFB, "ll"},  {0x2011, "‐"},   {0x2012, "–"},
    {0x2017, "_"},   {0x201A, ","},   {0x201B, "‘"},   {0x201E, ",,"},  {0x201F, "“"},   {0x2020, "+"},
    {0x2021, "++"},  {0x2022, "·"},   {0x2024, "."},   {0x2027, "·"},   {0x2034, "′′′"}, {0x2039, "<"},
    {0x203A, ">"},   {0x203C, "!!"},  {0x203E, "￣"},  {0x2044, "/"},   {0x2047, "??"},  {0x2048, "?!"},
    {0x2049, "!?"},  {0x20A4, "GBP"}, {0x2113, "l"},   {0x2117, "(P)"}, {0x2120, "SM"},  {0x2122, "TM"},
    {0x2126, "Ω"},   {0x212A, "K"},   {0x212B, "A"},   {0x2153, "1/3"}, {0x2154, "2/3"}, {0x2194, "<->"},
    {0x2212, "-"},   {0x2215, "/"},   {0x2217, "*"},   {0x2219, "·"},   {0x223C, "～"},  {0x22C5, "·"},
    {0x2500, "─"},   {0x2713, "√"},   {0x301C, "～"},  {0x30FB, "·"},   {0xFB00, "ff"},  {0xFB01, "fi"},
    {0xFB02, "fl"},  {0xFB03, "ffi"}, {0xFB04, "ffl"},
};

// Accented Greek and Cyrillic letters, each before the letter that it comes from. Sorted.
constexpr std::u16string_view kPairs =
    u"ΆΑΈΕΉΗΊΙΌΟΎΥΏΩΐιΪΙΫΥάαέεήηίιΰυϊιϋυόούυώωϐβϑθϕφϖπϰκϱρϴΘϵεЀЕЃГЌКЍИЎУѐеѓгќкѝиўуӁЖӂжӐАӑаӒАӓаӖЕӗеӜЖӝжӞЗӟзӢИӣиӤИӥиӦОӧо"
    u"ӬЭӭэӮУӯуӰУӱуӲУӳуӴЧӵчӸЫӹы";

// Marks that combine with the letter before, and characters without a width: they fall away.
struct Range {
    char32_t first;
    char32_t last;
};
constexpr Range kInvisible[] = {{0x0300, 0x036F}, {0x200B, 0x200F}, {0x202A, 0x202E}, {0x2060, 0x206F},
                                {0x20D0, 0x20F0}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}};
constexpr Range kSpaces[] = {{0x2000, 0x200A}, {0x202F, 0x202F}, {0x205F, 0x205F}};

template <std::size_t N>
bool Within(const Range (&ranges)[N], char32_t c) {
    return std::any_of(ranges, ranges + N, [c](Range range) { return range.first <= c && c <= range.last; });
}

std::string_view Letter(char32_t c) {
    for (const LetterRange &range : kLetters) {
        if (c < range.first || c - range.first >= range.letters.size()) continue;
        const std::string_view letter = range.letters.substr(c - range.first, 1);
        return letter[0] == '.' || letter[0] == '~' || letter[0] == '?' ? std::string_view() : letter;
    }
    return {};
}

std::string_view PairForm(char32_t c) {
    // Two bytes of UTF-8 hold every letter of kPairs' second places.
    thread_local char utf8[2];
    for (std::size_t i = 0; i + 1 < kPairs.size(); i += 2) {
        if (kPairs[i] != c) continue;
        utf8[0] = static_cast<char>(0xC0 | kPairs[i + 1] >> 6);
        utf8[1] = static_cast<char>(0x80 | (kPairs[i + 1] & 0x3F));
        return {utf8, 2};
    }
    return {};
}

}  // namespace

std::string_view Transliterate(char32_t character, bool &found) {
    found = true;
    if (const std::string_view letter = Letter(character); !letter.empty()) return letter;
    const Form *form = std::lower_bound(std::begin(kForms), std::end(kForms), character,
                                        [](const Form &entry, char32_t c) { return entry.character < c; });
    if (form != std::end(kForms) && form->character == character) return form->text;
    if (Within(kInvisible, character)) return {};
    if (Within(kSpaces, character)) return " ";
    const std::string_view pair = PairForm(character);
    found = !pair.empty();
    return pair;
}

}  // namespace ktl
