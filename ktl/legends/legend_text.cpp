#include "ktl/legends/legend_text.h"

#include <memory>

#include "ktl/platform/archive.h"
#include "ktl/platform/encoding.h"

namespace {

constexpr short kDefaultSize = 12;
/// The last version whose streams hold no font.
constexpr int kLastVersionWithoutFont = 206;

bool ReadFlag(CArchive &archive) {
    int flag = 0;
    archive >> flag;
    return flag != 0;
}

}  // namespace

CLegend_Text::CLegend_Text() : FontName(ktl::FromUtf8("宋体")) {
    Type = LEGEND_TEXT;
    Size = kDefaultSize;
}

CLegend *CLegend_Text::Clone() {
    auto copy = std::make_unique<CLegend_Text>();
    copy->Copy(this);
    return copy.release();
}

int CLegend_Text::Compare(CLegend *other) {
    if (!CLegend::Compare(other)) return 0;
    const auto *text = dynamic_cast<const CLegend_Text *>(other);
    return text && Italic == text->Italic && Underline == text->Underline && Strikeout == text->Strikeout &&
           Bold == text->Bold && FontName == text->FontName;
}

void CLegend_Text::Copy(CLegend *other) {
    CLegend::Copy(other);
    const auto *text = dynamic_cast<const CLegend_Text *>(other);
    if (!text) return;
    FontName = text->FontName;
    Bold = text->Bold;
    Italic = text->Italic;
    Underline = text->Underline;
    Strikeout = text->Strikeout;
}

int CLegend_Text::UnionLegendValue(CLegend *other) {
    CLegend::UnionLegendValue(other);
    const auto *text = dynamic_cast<const CLegend_Text *>(other);
    if (!text) return 0;
    if (Italic != text->Italic) Italic = true;
    if (Underline != text->Underline) Underline = true;
    if (Strikeout != text->Strikeout) Strikeout = true;
    if (Bold != text->Bold) Bold = true;
    if (!(FontName == text->FontName)) FontName.Empty();
    return 0;
}

int CLegend_Text::Serialize(CArchive &archive, int version) {
    CLegend::Serialize(archive, version);
    if (version <= kLastVersionWithoutFont) return 1;
    if (archive.IsStoring()) {
        archive << static_cast<int>(Italic) << static_cast<int>(Underline) << static_cast<int>(Strikeout)
                << static_cast<int>(Bold) << FontName;
    } else {
        Italic = ReadFlag(archive);
        Underline = ReadFlag(archive);
        Strikeout = ReadFlag(archive);
        Bold = ReadFlag(archive);
        archive >> FontName;
    }
    return 1;
}
