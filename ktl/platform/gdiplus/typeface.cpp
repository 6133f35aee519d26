#include "ktl/platform/gdiplus/typeface.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_TRUETYPE_TABLES_H

#include <algorithm>
#include <cwctype>
#include <map>
#include <mutex>

#include "ktl/platform/gdiplus/wide_text.h"

namespace ktl::raster {

namespace {

/// A family that is always there. Design values of 0 are taken from the face that is found.
struct StandIn {
    const wchar_t *name;
    const char *faces;
    int emHeight;
    int ascent;
    int descent;
    int lineSpacing;
};

constexpr char kSongFaces[] = "SimSun,AR PL UMing CN,AR PL UMing TW,Noto Serif CJK SC,Source Han Serif SC,serif";
constexpr char kSansFaces[] = "Liberation Sans,Nimbus Sans,DejaVu Sans,sans";

constexpr StandIn kStandIns[] = {
    {L"宋体", kSongFaces, 256, 220, 36, 292},
    {L"SimSun", kSongFaces, 256, 220, 36, 292},
    {L"新宋体", kSongFaces, 256, 220, 36, 292},
    {L"NSimSun", kSongFaces, 256, 220, 36, 292},
    {L"Arial", "Arial,Liberation Sans,Nimbus Sans,DejaVu Sans,sans", 2048, 1854, 434, 2355},
    {L"Tahoma", "Tahoma,Verdana,DejaVu Sans,sans", 2048, 2049, 423, 2472},
    {kGenericSansSerif, kSansFaces, 2048, 2049, 423, 2472},
    {kGenericSerif, "Times New Roman,Liberation Serif,Nimbus Roman,DejaVu Serif,serif", 0, 0, 0, 0},
    {kGenericMonospace, "Courier New,Liberation Mono,Nimbus Mono PS,DejaVu Sans Mono,monospace", 0, 0, 0, 0},
};

std::wstring Lowered(std::wstring_view name) {
    std::wstring lowered(name);
    std::transform(lowered.begin(), lowered.end(), lowered.begin(),
                   [](wchar_t c) { return static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c))); });
    return lowered;
}

struct PatternDeleter {
    void operator()(FcPattern *pattern) const { FcPatternDestroy(pattern); }
};
using PatternPtr = std::unique_ptr<FcPattern, PatternDeleter>;

PatternPtr PatternOf(const std::string &families) {
    PatternPtr pattern(FcPatternCreate());
    for (std::size_t at = 0; at <= families.size();) {
        const std::size_t end = std::min(families.find(',', at), families.size());
        const std::string family = families.substr(at, end - at);
        FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8 *>(family.c_str()));
        at = end + 1;
    }
    return pattern;
}

bool IsInstalled(const std::string &family) {
    const PatternPtr pattern = PatternOf(family);
    FcObjectSet *objects = FcObjectSetBuild(FC_FAMILY, nullptr);
    FcFontSet *fonts = FcFontList(nullptr, pattern.get(), objects);
    const bool found = fonts && fonts->nfont > 0;
    if (fonts) FcFontSetDestroy(fonts);
    FcObjectSetDestroy(objects);
    return found;
}

/// A face's own values: the platform's ascent and descent, and the larger of the two line spacings.
void ReadTables(FT_Face face, Typeface &typeface) {
    typeface.emHeight = face->units_per_EM > 0 ? face->units_per_EM : 2048;
    typeface.ascent = face->ascender;
    typeface.descent = -face->descender;
    const auto *os2 = static_cast<const TT_OS2 *>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
    if (os2 && os2->version != 0xFFFF && os2->usWinAscent + os2->usWinDescent > 0) {
        typeface.ascent = os2->usWinAscent;
        typeface.descent = os2->usWinDescent;
    }
    typeface.lineSpacing = typeface.ascent + typeface.descent;
    const auto *hhea = static_cast<const TT_HoriHeader *>(FT_Get_Sfnt_Table(face, FT_SFNT_HHEA));
    if (hhea) {
        const int spacing = hhea->Ascender - hhea->Descender + hhea->Line_Gap;
        typeface.lineSpacing = std::max(typeface.lineSpacing, spacing);
    }
}

void ReadFile(const char *file, int index, Typeface &typeface) {
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library) != 0) return;
    FT_Face face = nullptr;
    if (FT_New_Face(library, file, index, &face) == 0) {
        ReadTables(face, typeface);
        FT_Done_Face(face);
    }
    FT_Done_FreeType(library);
}

/// The values of the face that fontconfig picks; common ones when there is no font at all.
void ReadFace(Typeface &typeface) {
    typeface.ascent = 1854;
    typeface.descent = 434;
    typeface.lineSpacing = 2355;
    const PatternPtr pattern = PatternOf(typeface.faces);
    FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    FcResult result = FcResultNoMatch;
    const PatternPtr match(FcFontMatch(nullptr, pattern.get(), &result));
    FcChar8 *file = nullptr;
    int index = 0;
    if (!match || FcPatternGetString(match.get(), FC_FILE, 0, &file) != FcResultMatch) return;
    FcPatternGetInteger(match.get(), FC_INDEX, 0, &index);
    ReadFile(reinterpret_cast<const char *>(file), index & 0xFFFF, typeface);
}

std::shared_ptr<const Typeface> MakeTypeface(std::wstring_view name, const std::wstring &lowered) {
    auto typeface = std::make_shared<Typeface>();
    typeface->name = name;
    for (const StandIn &standIn : kStandIns) {
        if (lowered != Lowered(standIn.name)) continue;
        typeface->faces = standIn.faces;
        typeface->emHeight = standIn.emHeight;
        typeface->ascent = standIn.ascent;
        typeface->descent = standIn.descent;
        typeface->lineSpacing = standIn.lineSpacing;
        if (standIn.emHeight == 0) ReadFace(*typeface);
        return typeface;
    }
    typeface->faces = Utf8FromWide(name);
    if (typeface->faces.find(',') != std::string::npos || !IsInstalled(typeface->faces)) return nullptr;
    ReadFace(*typeface);
    return typeface;
}

}  // namespace

std::shared_ptr<const Typeface> FindTypeface(std::wstring_view name) {
    static std::mutex lock;
    static std::map<std::wstring, std::shared_ptr<const Typeface>> known;
    const std::wstring lowered = Lowered(name);
    if (lowered.empty()) return nullptr;
    const std::lock_guard guard(lock);
    const auto found = known.find(lowered);
    if (found != known.end()) return found->second;
    return known[lowered] = MakeTypeface(name, lowered);
}

}  // namespace ktl::raster
