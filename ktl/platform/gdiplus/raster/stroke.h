#pragma once

#include <cstdint>
#include <vector>

#include "ktl/platform/gdiplus/raster/geometry.h"
#include "ktl/platform/gdiplus/raster/span.h"
#include "ktl/platform/gdiplus/types.h"

namespace ktl::raster {

/// How a wide line looks. Caps are those of the two ends of an open line.
struct StrokeStyle {
    double width = 1;
    double miterLimit = 10;
    Gdiplus::LineJoin join = Gdiplus::LineJoinMiter;
    Gdiplus::LineCap startCap = Gdiplus::LineCapFlat;
    Gdiplus::LineCap endCap = Gdiplus::LineCapFlat;

    friend bool operator==(const StrokeStyle &, const StrokeStyle &) = default;
    /// How far from its points the line can reach, in pixels.
    double Reach() const;
};

/// Draws wide lines as convex pieces: a quadrilateral for each segment, the joins, and the caps, each by the fill rule
/// with vertices rounded to 1/16 pixel.
///
/// Between whole points a piece depends on the directions of its two segments alone: the pieces of short segments are
/// kept, for the last few styles, and put again where they recur.
class Stroker {
  public:
    Stroker() = default;

    /// Draws one line into the sink, cut to the box. Repeated points are passed over. An open line that is one point
    /// draws what its caps make of a point: nothing when they are flat. A closed one draws what a shrinking square
    /// ends as: a square of the line's width, or with round joins a disc. Where a line turns back on itself, a mitred
    /// or bevelled corner is flat.
    void Draw(const StrokeStyle &style, const Gdiplus::Point *points, std::size_t count, bool closed, const Box &box,
              SpanSink &sink);
    void Draw(const StrokeStyle &style, const PointD *points, std::size_t count, bool closed, const Box &box,
              SpanSink &sink);

  private:
    /// A kept piece: spans around its vertex, and the box they lie in.
    struct Piece {
        std::uint32_t key = 0;
        std::uint32_t first = 0;
        std::uint32_t count = 0;
        bool isMade = false;
        std::int16_t left = 0, top = 0, right = 0, bottom = 0;
    };
    struct PieceStore {
        StrokeStyle style;
        bool sweepsDisc = false;
        std::uint64_t lastUse = 0;
        std::vector<Piece> pieces;
        std::vector<Span> spans;
    };

    void SetUp(const StrokeStyle &style, bool closed, const Box &box, SpanSink &sink);
    void PutConvex(const PointD *points, std::size_t count);
    void PutQuad(PointD a, PointD b, PointD direction);
    void PutJoin(PointD at, PointD in, PointD out, double inLength, double outLength);
    void PutWedge(PointD at, PointD from, PointD to);
    void PutDisc(PointD at);
    void PutCap(Gdiplus::LineCap cap, PointD at, PointD outward);
    void PutDot(PointD at, bool closed);

    PieceStore &StoreFor(const StrokeStyle &style, bool sweepsDisc);
    const Piece &PieceFor(int dx0, int dy0, int dx1, int dy1);
    void MakePiece(Piece &piece, int dx0, int dy0, int dx1, int dy1);
    void PutPiece(const Piece &piece, int x, int y);
    bool IsOutside(PointD a, PointD b) const;
    void PutSegment(PointD a, PointD b, PointD c, bool hasIn);
    template <class P>
    void DrawChain(const P *points, std::size_t count, bool closed);

    StrokeStyle m_style;
    double m_half = 0.5;
    double m_reach = 0;
    /// Round joins may be whole discs: the line is the sweep of a disc along its points.
    bool m_sweepsDisc = false;
    Box m_box;
    SpanSink *m_sink = nullptr;
    /// The styles' store, null where nothing is kept, and the box that a kept piece's vertex must lie in to be seen.
    PieceStore *m_store = nullptr;
    Box m_nearBox;
    ConvexFill m_convex;
    std::vector<PointD> m_outline;
    std::vector<FixedPoint> m_fixed;
    std::vector<Span> m_clipped;
    std::vector<PieceStore> m_stores;
    std::uint64_t m_uses = 0;
};

}  // namespace ktl::raster
