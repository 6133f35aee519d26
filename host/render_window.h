#pragma once

#include <vector>

#include "host/shape_set.h"
#include "ktl/mapview/map_wnd.h"

namespace ktl::host {

/// A map window off the screen: give it its shapes, size it, show an extent or a level, paint, and take the picture.
///
///     RenderWindow window(WorldUnits::kNormalised, 0, RGB(255, 255, 255));
///     window.AddShapes(countries);
///     window.SetPictureSize(1024, 1024);
///     window.ShowExtent(countries.GetExtent());
///     window.Paint();
class RenderWindow : public CXMapWnd {
  public:
    /// `mapType` answers to `units`: a degree map for degrees.
    RenderWindow(WorldUnits units, ENUM_MAP_TYPE mapType, COLORREF background);

    /// Borrows the shapes, which must outlive the window. Later ones are drawn over earlier ones.
    void AddShapes(ShapeSet &shapes) { m_layers.push_back(&shapes); }
    void SetSmooth(bool smooth) { m_smooth = smooth; }
    void SetProgress(ProgressCallback progress) { m_progress = std::move(progress); }
    void SetPictureSize(int width, int height);

    /// Shows all of an extent of world coordinates at the deepest level at which it fits. Where it doesn't fit at level
    /// 1 the tiles are drawn smaller than their 256 pixels, down to 8.
    void ShowExtent(const CExtent &wanted);
    /// Shows exactly this level (1 to 22) round the centre.
    void ShowLevel(const CPointD &center, int level);

    /// Draws into the window's back buffer. Throws `Interrupted` when the progress callback says so.
    void Paint() { DrawLayers(); }
    void DrawLayers() override;

    int GetLevel() const { return m_nLevel; }
    long long GetShapesDrawn() const { return m_shapesDrawn; }
    /// The back buffer, owned by the window; null before it has a size.
    Gdiplus::Bitmap *GetPicture() { return m_pBitmap == nullptr ? nullptr : &*m_pBitmap; }

  private:
    double TileSide(int level) const;
    void Show(const CPointD &center, int level, int tilePixels);

    const WorldUnits m_units;
    std::vector<ShapeSet *> m_layers;
    ProgressCallback m_progress;
    bool m_smooth = false;
    long long m_shapesDrawn = 0;
};

}  // namespace ktl::host
