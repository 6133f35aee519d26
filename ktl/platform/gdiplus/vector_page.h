#pragma once

#include <memory>
#include <vector>

#include "ktl/platform/export.h"
#include "ktl/platform/gdiplus/forward.h"
#include "ktl/platform/types.h"

namespace ktl {

/// A page that keeps what is drawn on it as lines, areas and text: one page of a PDF or SVG file. Coordinates are
/// pixels of 1/96 inch. Hatch patterns and images stay pixels.
///
///     ktl::VectorPage page(ktl::VectorPage::Kind::Pdf, 800, 600);
///     DrawMap(page.GetGraphics());
///     const std::vector<BYTE> file = page.Finish();
class KTL_API VectorPage {
  public:
    enum class Kind { Pdf, Svg };

    /// Sides are in pixels, at least 1. Before drawing is started there is no page.
    VectorPage(Kind kind, int width, int height);
    ~VectorPage();
    VectorPage(const VectorPage &) = delete;
    VectorPage &operator=(const VectorPage &) = delete;

    /// Borrowed; null when there is no page, and after `Finish`.
    Gdiplus::Graphics *GetGraphics() const;
    /// The bytes of the whole file; empty when there is no page or it could not be written. Ends the drawing.
    std::vector<BYTE> Finish();

  private:
    struct Data;
    std::unique_ptr<Data> m_data;
};

}  // namespace ktl
