#pragma once

#include <cairo.h>

#include <memory>
#include <string_view>
#include <vector>

#include "ktl/platform/gdiplus/string_format.h"
#include "ktl/platform/gdiplus/types.h"

/// \file
/// Private to the text classes: strings laid out and drawn through Pango.

namespace ktl::raster {

struct ShapedText;
struct Typeface;

/// A string and all that its layout depends on. Sizes are in units of the drawing, the em's size with them.
struct TextRequest {
    std::wstring_view text;
    const Typeface *face = nullptr;
    double em = 0;
    /// A sum of FontStyle bits.
    int style = 0;
    bool isAntialiased = true;
    /// The box to lay out in; a side of 0 sets no limit in its direction.
    Gdiplus::RectF area;
    const Gdiplus::StringFormat *format = nullptr;
};

/// A string in its place.
struct TextBlock {
    struct Line {
        int index = 0;
        double x = 0;
        double baseline = 0;
    };

    /// The box that the text takes, its padding included.
    Gdiplus::RectF box;
    int codepoints = 0;
    std::vector<Line> lines;
    /// True when text may reach out of the area, where it must not be drawn.
    bool needsClip = false;
    std::shared_ptr<const ShapedText> shaped;
};

/// Lays a string out. Layouts are kept for a while, so that measuring and drawing the same string costs one; each
/// thread has its own.
TextBlock PlaceText(const TextRequest &request);

/// Draws the lines in the source that is set.
void DrawTextBlock(cairo_t *cairo, const TextBlock &block);

}  // namespace ktl::raster
