#include "ktl/controls/xstring.h"

#include <algorithm>
#include <string>

#include "ktl/platform/archive.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/gdiplus/gdiplus.h"

namespace {

const CString &DefaultFontName() {
    static const CString name = ktl::FromUtf8("宋体");
    return name;
}

Gdiplus::Color ColorOf(COLORREF color, int alpha) {
    return {static_cast<BYTE>(alpha), GetRValue(color), GetGValue(color), GetBValue(color)};
}

/// From the point to each place of the halo: left, right, below and above.
constexpr Gdiplus::PointF kHalo[] = {{-1, 0}, {1, 0}, {0, 1}, {0, -1}};

}  // namespace

/// What the text is drawn with.
struct CXString::Tools {
    explicit Tools(const CXString &owner)
        : font(ktl::WideFromGbk(owner.m_fontName.View()).c_str(), static_cast<Gdiplus::REAL>(owner.m_fontSize),
               owner.m_fontStyle, Gdiplus::UnitPixel),
          format(Gdiplus::StringFormatFlagsNoWrap | Gdiplus::StringFormatFlagsNoClip),
          textBrush(ColorOf(owner.m_textColor, owner.m_textAlpha)),
          haloBrush(ColorOf(owner.m_haloColor, owner.m_haloAlpha)) {
        format.SetAlignment(owner.m_alignment);
        format.SetTrimming(Gdiplus::StringTrimmingNone);
    }

    Gdiplus::Font font;
    Gdiplus::StringFormat format;
    Gdiplus::SolidBrush textBrush;
    Gdiplus::SolidBrush haloBrush;
};

CXString::CXString() : m_fontName(DefaultFontName()), m_alignment(Gdiplus::StringAlignmentCenter) {}

CXString::CXString(CString text) : CXString() {
    m_text = std::move(text);
}

CXString::CXString(const CXString &other)
    : m_text(other.m_text),
      m_fontName(other.m_fontName),
      m_fontSize(other.m_fontSize),
      m_fontStyle(other.m_fontStyle),
      m_alignment(other.m_alignment),
      m_textColor(other.m_textColor),
      m_haloColor(other.m_haloColor),
      m_textAlpha(other.m_textAlpha),
      m_haloAlpha(other.m_haloAlpha) {}

CXString &CXString::operator=(const CXString &other) {
    if (this == &other) return *this;
    m_text = other.m_text;
    m_fontName = other.m_fontName;
    m_fontSize = other.m_fontSize;
    m_fontStyle = other.m_fontStyle;
    m_alignment = other.m_alignment;
    m_textColor = other.m_textColor;
    m_haloColor = other.m_haloColor;
    m_textAlpha = other.m_textAlpha;
    m_haloAlpha = other.m_haloAlpha;
    m_tools.reset();
    return *this;
}

CXString::~CXString() = default;

void CXString::SetText(CString text) {
    m_text = std::move(text);
}

CString CXString::GetText() const {
    return m_text;
}

void CXString::SetFontName(CString name) {
    m_fontName = std::move(name);
    m_tools.reset();
}

CString CXString::GetFontName() const {
    return m_fontName;
}

void CXString::SetFontSize(double size) {
    m_fontSize = size >= 1.0 ? std::min(size, kMaxFontSize) : 1.0;
    m_tools.reset();
}

double CXString::GetFontSize() const {
    return m_fontSize;
}

void CXString::SetFontStyle(int style) {
    m_fontStyle = style;
    m_tools.reset();
}

int CXString::GetFontStyle() const {
    return m_fontStyle;
}

void CXString::SetAlignment(Gdiplus::StringAlignment alignment) {
    m_alignment = alignment;
    m_tools.reset();
}

Gdiplus::StringAlignment CXString::GetAlignment() const {
    return m_alignment;
}

void CXString::SetTextColor(COLORREF color, int alpha) {
    m_textColor = color;
    m_textAlpha = alpha;
    m_tools.reset();
}

COLORREF CXString::GetTextColor() const {
    return m_textColor;
}

void CXString::SetHaloColor(COLORREF color, int alpha) {
    m_haloColor = color;
    m_haloAlpha = alpha;
    m_tools.reset();
}

COLORREF CXString::GetHaloColor() const {
    return m_haloColor;
}

void CXString::Update() {
    m_tools.reset();
    Need();
}

/// Null before drawing is started; what was asked for too early is made later.
const CXString::Tools *CXString::Need() const {
    if (!m_tools && ktl::raster::DrawingStarted()) m_tools = std::make_unique<Tools>(*this);
    return m_tools.get();
}

const Gdiplus::Font *CXString::GetFont() const {
    const Tools *tools = Need();
    return tools ? &tools->font : nullptr;
}

const Gdiplus::StringFormat *CXString::GetStringFormat() const {
    const Tools *tools = Need();
    return tools ? &tools->format : nullptr;
}

const Gdiplus::Brush *CXString::GetTextBrush() const {
    const Tools *tools = Need();
    return tools ? &tools->textBrush : nullptr;
}

const Gdiplus::Brush *CXString::GetHaloBrush() const {
    const Tools *tools = Need();
    return tools ? &tools->haloBrush : nullptr;
}

void CXString::GetRectF(Gdiplus::Graphics *graphics, Gdiplus::RectF &rect) const {
    rect = Gdiplus::RectF();
    if (!graphics || m_text.IsEmpty()) return;
    const std::wstring wide = ktl::WideFromGbk(m_text.View());
    graphics->MeasureString(wide.c_str(), static_cast<int>(wide.size()), GetFont(), Gdiplus::PointF(),
                            GetStringFormat(), &rect);
}

void CXString::Draw(Gdiplus::Graphics *graphics, CPoint point) {
    if (!graphics || m_text.IsEmpty()) return;
    const std::wstring wide = ktl::WideFromGbk(m_text.View());
    const Gdiplus::PointF origin(static_cast<Gdiplus::REAL>(point.x), static_cast<Gdiplus::REAL>(point.y));
    const auto draw = [&](const Gdiplus::PointF &step, const Gdiplus::Brush *brush) {
        graphics->DrawString(wide.c_str(), static_cast<int>(wide.size()), GetFont(), origin + step, GetStringFormat(),
                             brush);
    };
    if (m_haloAlpha > 0) {
        for (const Gdiplus::PointF &step : kHalo) draw(step, GetHaloBrush());
    }
    draw(Gdiplus::PointF(), GetTextBrush());
}

int CXString::Serialize(CArchive &archive, int version) {
    if (version == 200) {
        Serialize200(archive);
        return 1;
    }
    if (version >= 201) {
        Serialize201(archive);
        return 1;
    }
    return 0;
}

int CXString::Serialize200(CArchive &archive) {
    auto alignment = static_cast<int>(m_alignment);
    if (archive.IsStoring()) {
        archive << m_text << m_fontName << m_fontSize << m_fontStyle << alignment;
        archive << m_textColor << m_textAlpha << m_haloColor << m_haloAlpha;
        return 1;
    }
    CXString read;
    archive >> read.m_text >> read.m_fontName >> read.m_fontSize >> read.m_fontStyle >> alignment;
    archive >> read.m_textColor >> read.m_textAlpha >> read.m_haloColor >> read.m_haloAlpha;
    read.SetFontSize(read.m_fontSize);
    read.m_alignment = static_cast<Gdiplus::StringAlignment>(std::clamp(alignment, 0, 2));
    *this = read;
    return 1;
}

int CXString::Serialize201(CArchive &) {
    return 1;
}
