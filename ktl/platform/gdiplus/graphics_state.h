#pragma once

#include <cairo.h>

#include <memory>
#include <new>
#include <vector>

#include "ktl/platform/gdiplus/graphics.h"
#include "ktl/platform/gdiplus/picture.h"
#include "ktl/platform/gdiplus/raster/coverage_mask.h"
#include "ktl/platform/gdiplus/raster/ellipse_stamps.h"
#include "ktl/platform/gdiplus/raster/geometry.h"
#include "ktl/platform/gdiplus/raster/path_geometry.h"
#include "ktl/platform/gdiplus/raster/scan_fill.h"
#include "ktl/platform/gdiplus/raster/stroke.h"
#include "ktl/platform/gdiplus/surface.h"

/// \file
/// Private to the drawing layer: what a `Graphics` holds.

namespace ktl::raster {

/// Memory that drawing calls keep for the next one.
struct Scratch {
    ScanFill fill;
    Stroker stroker;
    EllipseStamps ellipses;
    CoverageMask mask;
    CoverageMask inside;
    PathGeometry geometry;
    Chains chains;
    std::vector<FixedPoint> fixed;
    std::vector<PointD> dash;
};

struct CairoDeleter {
    void operator()(cairo_t *cairo) const { cairo_destroy(cairo); }
};
struct PatternDeleter {
    void operator()(cairo_pattern_t *pattern) const { cairo_pattern_destroy(pattern); }
};
using CairoPtr = std::unique_ptr<cairo_t, CairoDeleter>;
using PatternPtr = std::unique_ptr<cairo_pattern_t, PatternDeleter>;

}  // namespace ktl::raster

/// The target and the drawing state of a `Graphics`.
struct Gdiplus::Graphics::State {
    /// Draws on the surface, of which it holds a reference. The bounds limit every clip.
    State(cairo_surface_t *target, const ktl::raster::Box &targetBounds, REAL xdpi, REAL ydpi);

    ktl::raster::SurfacePtr surface;
    /// Made when Cairo is first needed.
    ktl::raster::CairoPtr cairo;
    /// Empty when the target has no pixels (a page of a PDF or SVG file): everything is then drawn by Cairo.
    ktl::raster::PixelView view;
    ktl::raster::Box bounds;
    /// The clip in pixels, within the bounds.
    ktl::raster::Box clip;
    REAL dpiX;
    REAL dpiY;

    SmoothingMode smoothing = SmoothingModeNone;
    PixelOffsetMode pixelOffset = PixelOffsetModeDefault;
    InterpolationMode interpolation = InterpolationModeBilinear;
    CompositingMode compositing = CompositingModeSourceOver;
    CompositingQuality quality = CompositingQualityDefault;
    TextRenderingHint textHint = TextRenderingHintSystemDefault;
    UINT textContrast = 4;
    int originX = 0;
    int originY = 0;
    /// World units to pixels.
    ktl::raster::Affine transform;
    ktl::raster::Scratch scratch;

    bool HasHalfOffset() const {
        return pixelOffset == PixelOffsetModeHalf || pixelOffset == PixelOffsetModeHighQuality;
    }
    /// True when the scan converter draws, else Cairo.
    bool IsCrisp() const { return view.pixels != nullptr && smoothing == SmoothingModeNone; }
    /// True when whole points in world units are whole pixels of the scan converter.
    bool IsWhole() const { return transform.IsIdentity() && !HasHalfOffset(); }
    /// World units to the coordinates of the scan converter, in which pixel (i, j) has its centre at (i, j).
    ktl::raster::Affine CrispMap() const;
    /// World units to those of Cairo, in which that centre lies at (i + 0.5, j + 0.5).
    ktl::raster::Affine CairoMap() const;
    /// The pixels of a rectangle whose sides are level on the target.
    ktl::raster::Box PixelsOf(double x, double y, double width, double height) const;
};

namespace Gdiplus {

/// Runs one drawing call; lack of memory becomes a status, and what it left half-done is dropped.
template <class Call>
Status Guarded(Graphics::State &state, Call &&call) {
    try {
        call();
        return Ok;
    } catch (const std::bad_alloc &) {
        state.scratch = ktl::raster::Scratch();
        return OutOfMemory;
    }
}

}  // namespace Gdiplus

namespace ktl::raster {

/// Drawing by Cairo on the target of a `Graphics`: within its clip and by its compositing mode. Coordinates are Cairo's
/// own, with the corner of the upper left pixel at (0, 0); what is set is undone at the end.
///
///     CairoScope scope(state);
///     scope.UseWorldUnits();
///     cairo_rectangle(scope.Get(), ...);
class CairoScope {
  public:
    explicit CairoScope(Gdiplus::Graphics::State &state);
    ~CairoScope();
    CairoScope(const CairoScope &) = delete;
    CairoScope &operator=(const CairoScope &) = delete;

    cairo_t *Get() const { return m_cairo; }
    /// From here on coordinates are world units, moved by half a pixel where the pixel offset mode says so.
    void UseWorldUnits();
    /// Makes a brush the source. Hatch patterns stay fixed to the pixels.
    void SetSource(const Gdiplus::Brush &brush);
    void SetSource(Gdiplus::Color color);

  private:
    Gdiplus::Graphics::State &m_state;
    cairo_t *m_cairo;
};

/// A matrix as Cairo takes it.
cairo_matrix_t MatrixOf(const Affine &map);

}  // namespace ktl::raster
