#include "host/render_window.h"

#include <algorithm>
#include <cmath>

#include "ktl/platform/gdiplus/gdiplus.h"

namespace ktl::host {

namespace {

constexpr int kFirstLevel = 1;
constexpr int kLastLevel = 22;
constexpr int kTilePixels = 256;
// An extent that fits up to rounding fits.
constexpr double kRoundingSlack = 1.0 + 1e-9;

bool Fits(const CExtent &wanted, double viewWidth, double viewHeight) {
    return wanted.Width() <= viewWidth * kRoundingSlack && wanted.Height() <= viewHeight * kRoundingSlack;
}

}  // namespace

RenderWindow::RenderWindow(WorldUnits units, ENUM_MAP_TYPE mapType, COLORREF background) : m_units(units) {
    m_nMapType = mapType;
    m_colorBack = background;
}

void RenderWindow::SetPictureSize(int width, int height) {
    MoveWindow(0, 0, width, height);
}

double RenderWindow::TileSide(int level) const {
    const double whole = m_units == WorldUnits::kDegrees ? 360.0 : 1.0;
    return std::ldexp(whole, kFirstLevel - level);
}

void RenderWindow::ShowExtent(const CExtent &wanted) {
    for (int level = kLastLevel; level >= kFirstLevel; --level) {
        const double pixel = TileSide(level) / kTilePixels;
        if (Fits(wanted, m_nWidth * pixel, m_nHeight * pixel)) return Show(wanted.CenterPoint(), level, kTilePixels);
    }
    const double share = std::min(m_nWidth * TileSide(kFirstLevel) / wanted.Width(),
                                  m_nHeight * TileSide(kFirstLevel) / wanted.Height());
    Show(wanted.CenterPoint(), kFirstLevel, static_cast<int>(share));
}

void RenderWindow::ShowLevel(const CPointD &center, int level) {
    Show(center, level, kTilePixels);
}

// The view takes the first level whose tile side is no greater than what the extent asks for. An extent a quarter
// larger than the level's own asks for a size well between two levels, so that no rounding moves it to the next.
void RenderWindow::Show(const CPointD &center, int level, int tilePixels) {
    EMSetSingleMapFixWidth(tilePixels);
    const double pixel = TileSide(level) / m_nFixWidth * 1.25;
    const double halfWidth = m_nWidth * pixel * 0.5;
    const double halfHeight = m_nHeight * pixel * 0.5;
    ZoomToExtent(CExtent(center.x - halfWidth, center.y - halfHeight, center.x + halfWidth, center.y + halfHeight));
}

void RenderWindow::DrawLayers() {
    Gdiplus::Graphics &graphics = *Getpgs();
    graphics.Clear(Gdiplus::Color(GetRValue(m_colorBack), GetGValue(m_colorBack), GetBValue(m_colorBack)));
    graphics.SetSmoothingMode(m_smooth ? Gdiplus::SmoothingModeAntiAlias : Gdiplus::SmoothingModeNone);
    m_shapesDrawn = 0;
    for (ShapeSet *layer : m_layers) {
        m_shapesDrawn += layer->Draw(graphics, GetRatio(), GetCurDataExtent(), m_progress);
    }
}

}  // namespace ktl::host
