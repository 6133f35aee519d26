#pragma once

#include <vector>

#include "ktl/platform/gdiplus/raster/span.h"

namespace ktl::raster {

/// Small ellipses in boxes of whole pixels, as points of maps are drawn: their spans are made once and put wherever
/// they recur. The last few sizes are kept.
class EllipseStamps {
  public:
    static constexpr int kLargest = 64;

    /// Spans of the ellipse in the box (0, 0, width, height), each pixel once.
    struct Stamp {
        int width = 0;
        int height = 0;
        std::vector<Span> filled;
        /// The line of one pixel around it.
        std::vector<Span> outline;
    };
    /// Sides are 1 to kLargest. The stamp is good until the next call.
    const Stamp &For(int width, int height);

  private:
    static constexpr std::size_t kKept = 8;

    std::vector<Stamp> m_stamps;
    std::size_t m_oldest = 0;
};

}  // namespace ktl::raster
