#include "ktl/platform/gdiplus/raster/stroke.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <type_traits>
#include <utility>

#include "ktl/platform/gdiplus/raster/curves.h"

namespace ktl::raster {

namespace {

constexpr std::size_t kStyles = 4;
constexpr std::size_t kPieces = 8192;
constexpr std::size_t kMaxStoredSpans = std::size_t{1} << 18;
/// Longest step, in pixels, whose pieces are kept; six bits a number make the key.
constexpr int kShort = 31;
/// Pieces are made in a box of this half side.
constexpr int kPieceRoom = 2000;

double Cross(PointD a, PointD b) {
    return a.x * b.y - a.y * b.x;
}
double Dot(PointD a, PointD b) {
    return a.x * b.x + a.y * b.y;
}
PointD Normal(PointD direction) {
    return {-direction.y, direction.x};
}
PointD Turned(PointD v, double cosine, double sine) {
    return {v.x * cosine - v.y * sine, v.x * sine + v.y * cosine};
}

bool IsShort(Gdiplus::Point a, Gdiplus::Point b) {
    const std::int64_t dx = static_cast<std::int64_t>(b.X) - a.X;
    const std::int64_t dy = static_cast<std::int64_t>(b.Y) - a.Y;
    return dx >= -kShort && dx <= kShort && dy >= -kShort && dy <= kShort;
}

std::uint32_t KeyOf(int dx0, int dy0, int dx1, int dy1) {
    const auto six = [](int v) { return static_cast<std::uint32_t>(v + kShort + 1); };
    return six(dx0) | six(dy0) << 6 | six(dx1) << 12 | six(dy1) << 18;
}

/// Gathers spans in a vector.
class CollectSink final : public SpanSink {
  public:
    explicit CollectSink(std::vector<Span> &spans) : m_spans(spans) {}
    void Put(const Span *spans, std::size_t count, int, int) override {
        m_spans.insert(m_spans.end(), spans, spans + count);
    }

  private:
    std::vector<Span> &m_spans;
};

/// Sorts the spans from `first` on and joins those that touch.
void JoinSpans(std::vector<Span> &spans, std::size_t first) {
    std::sort(spans.begin() + static_cast<std::ptrdiff_t>(first), spans.end(),
              [](const Span &a, const Span &b) { return a.y != b.y ? a.y < b.y : a.x0 < b.x0; });
    std::size_t kept = first;
    for (std::size_t i = first; i < spans.size(); ++i) {
        Span &last = spans[kept > first ? kept - 1 : first];
        if (kept > first && last.y == spans[i].y && spans[i].x0 <= last.x1) {
            last.x1 = std::max(last.x1, spans[i].x1);
        } else {
            spans[kept++] = spans[i];
        }
    }
    spans.resize(kept);
}

PointD AsPointD(Gdiplus::Point p) {
    return {static_cast<double>(p.X), static_cast<double>(p.Y)};
}
PointD AsPointD(PointD p) {
    return p;
}

/// The number of points without those at the end that repeat the first.
template <class P>
std::size_t WithoutClosingPoints(const P *points, std::size_t count) {
    while (count > 1 && points[count - 1] == points[0]) --count;
    return count;
}

/// Calls `segment(a, b, c, hasIn)` for each segment from b to c of different points, a being the point before b when
/// there is one.
template <class P, class Segment>
void WalkChain(const P *points, std::size_t count, bool closed, Segment &&segment) {
    P a = points[count - 1];
    P b = points[0];
    bool hasIn = closed;
    for (std::size_t i = 1; i < count + (closed ? 1 : 0); ++i) {
        const P c = points[i == count ? 0 : i];
        if (c == b) continue;
        segment(a, b, c, hasIn);
        a = b;
        b = c;
        hasIn = true;
    }
}

}  // namespace

double StrokeStyle::Reach() const {
    // A spike longer than that is left out: looking for it would cost more than it shows.
    constexpr double kMostReach = 1 << 20;
    const double half = width / 2;
    const double corner = join == Gdiplus::LineJoinMiter || join == Gdiplus::LineJoinMiterClipped
                              ? half * std::max(1.0, miterLimit)
                              : half;
    const bool hasAnchor = ((startCap | endCap) & Gdiplus::LineCapAnchorMask) != 0;
    return std::min(kMostReach, std::max(corner, hasAnchor ? width * 2 : half * std::numbers::sqrt2) + 2);
}

void Stroker::SetUp(const StrokeStyle &style, bool closed, const Box &box, SpanSink &sink) {
    m_style = style;
    m_half = style.width / 2;
    m_reach = style.Reach();
    m_sweepsDisc = style.join == Gdiplus::LineJoinRound &&
                   (closed || (style.startCap == Gdiplus::LineCapRound && style.endCap == Gdiplus::LineCapRound));
    m_box = box;
    m_sink = &sink;
}

void Stroker::PutConvex(const PointD *points, std::size_t count) {
    m_fixed.clear();
    for (std::size_t i = 0; i < count; ++i) m_fixed.push_back(ToFixed(points[i]));
    const std::vector<Span> &spans = m_convex.Spans(m_fixed.data(), count, m_box);
    if (!spans.empty()) m_sink->Put(spans.data(), spans.size(), 0, 0);
}

void Stroker::PutQuad(PointD a, PointD b, PointD direction) {
    const PointD n = Normal(direction) * m_half;
    const PointD quad[4] = {a + n, b + n, b - n, a - n};
    PutConvex(quad, 4);
}

void Stroker::PutWedge(PointD at, PointD from, PointD to) {
    const double angle = std::atan2(Cross(from, to), Dot(from, to));
    const int arcs = std::abs(angle) > std::numbers::pi / 2 + 1e-9 ? 2 : 1;
    const double part = angle / arcs;
    const double reach = 4.0 / 3.0 * std::tan(part / 4);
    m_outline.assign({at, at + from});
    PointD start = from;
    for (int i = 0; i < arcs; ++i) {
        const PointD end = Turned(start, std::cos(part), std::sin(part));
        Flatten({at + start, at + start + Normal(start) * reach, at + end - Normal(end) * reach, at + end}, m_outline);
        start = end;
    }
    PutConvex(m_outline.data(), m_outline.size());
}

void Stroker::PutDisc(PointD at) {
    const Arc circle = EllipseCurves(at.x - m_half, at.y - m_half, m_style.width, m_style.width);
    m_outline.clear();
    for (const Cubic &curve : circle.curves) Flatten(curve, m_outline);
    PutConvex(m_outline.data(), m_outline.size());
}

void Stroker::PutJoin(PointD at, PointD in, PointD out, double inLength, double outLength) {
    const double cross = Cross(in, out);
    const double cosine = Dot(in, out);
    if (cross == 0 && cosine > 0) return;
    const double side = cross >= 0 ? -m_half : m_half;
    const PointD from = Normal(in) * side;
    const PointD to = Normal(out) * side;
    if (m_style.join == Gdiplus::LineJoinRound) {
        if (m_sweepsDisc || (inLength >= m_half && outLength >= m_half)) {
            PutDisc(at);
        } else if (cross == 0) {
            PutWedge(at, from, in * m_half);
            PutWedge(at, in * m_half, to);
        } else {
            PutWedge(at, from, to);
        }
        return;
    }
    const bool isMiter = m_style.join != Gdiplus::LineJoinBevel;
    if (isMiter && 2 <= m_style.miterLimit * m_style.miterLimit * (1 + cosine)) {
        const PointD tip = at + (from + to) * (1 / (1 + cosine));
        const PointD quad[4] = {at, at + from, tip, at + to};
        PutConvex(quad, 4);
    } else {
        const PointD triangle[3] = {at, at + from, at + to};
        PutConvex(triangle, 3);
    }
}

void Stroker::PutCap(Gdiplus::LineCap cap, PointD at, PointD outward) {
    const PointD along = outward * m_half;
    const PointD across = Normal(along);
    switch (cap) {
        case Gdiplus::LineCapSquare: {
            PutQuad(at, at + along, outward);
            break;
        }
        case Gdiplus::LineCapRound: {
            PutWedge(at, across, along);
            PutWedge(at, along, across * -1);
            break;
        }
        case Gdiplus::LineCapTriangle: {
            const PointD triangle[3] = {at + across, at + along, at - across};
            PutConvex(triangle, 3);
            break;
        }
        // The anchors are twice as wide as the line.
        case Gdiplus::LineCapSquareAnchor: {
            const PointD a = along * std::numbers::sqrt2;
            const PointD b = across * std::numbers::sqrt2;
            const PointD square[4] = {at + a + b, at + a - b, at - a - b, at - a + b};
            PutConvex(square, 4);
            break;
        }
        case Gdiplus::LineCapRoundAnchor: {
            m_half *= 2;
            m_style.width *= 2;
            PutDisc(at);
            m_half /= 2;
            m_style.width /= 2;
            break;
        }
        case Gdiplus::LineCapDiamondAnchor: {
            const PointD diamond[4] = {at + along * 2, at + across * 2, at - along * 2, at - across * 2};
            PutConvex(diamond, 4);
            break;
        }
        case Gdiplus::LineCapArrowAnchor: {
            const PointD base = at - along * (2 * std::numbers::sqrt3);
            const PointD arrow[3] = {at, base + across * 2, base - across * 2};
            PutConvex(arrow, 3);
            break;
        }
        default:
            break;
    }
}

void Stroker::PutDot(PointD at, bool closed) {
    if (closed && m_style.join == Gdiplus::LineJoinRound) {
        PutDisc(at);
    } else if (closed) {
        PutQuad(at - PointD{m_half, 0}, at + PointD{m_half, 0}, {1, 0});
    } else {
        PutCap(m_style.startCap, at, {-1, 0});
        PutCap(m_style.endCap, at, {1, 0});
    }
}

Stroker::PieceStore &Stroker::StoreFor(const StrokeStyle &style, bool sweepsDisc) {
    ++m_uses;
    PieceStore *oldest = nullptr;
    for (PieceStore &store : m_stores) {
        if (store.style == style && store.sweepsDisc == sweepsDisc) {
            store.lastUse = m_uses;
            return store;
        }
        if (oldest == nullptr || store.lastUse < oldest->lastUse) oldest = &store;
    }
    if (m_stores.size() < kStyles) oldest = &m_stores.emplace_back();
    oldest->style = style;
    oldest->sweepsDisc = sweepsDisc;
    oldest->lastUse = m_uses;
    oldest->pieces.assign(kPieces, {});
    oldest->spans.clear();
    return *oldest;
}

const Stroker::Piece &Stroker::PieceFor(int dx0, int dy0, int dx1, int dy1) {
    const std::uint32_t key = KeyOf(dx0, dy0, dx1, dy1);
    Piece &piece = m_store->pieces[(key * 2654435761U) >> 19];
    static_assert(kPieces == std::size_t{1} << 13);
    if (!piece.isMade || piece.key != key) [[unlikely]] {
        if (m_store->spans.size() > kMaxStoredSpans) {
            m_store->pieces.assign(kPieces, {});
            m_store->spans.clear();
        }
        piece.key = key;
        MakePiece(piece, dx0, dy0, dx1, dy1);
    }
    return piece;
}

void Stroker::MakePiece(Piece &piece, int dx0, int dy0, int dx1, int dy1) {
    std::vector<Span> &spans = m_store->spans;
    const std::size_t first = spans.size();
    CollectSink collect(spans);
    SpanSink *const sink = std::exchange(m_sink, &collect);
    const Box box = std::exchange(m_box, Box{-kPieceRoom, -kPieceRoom, kPieceRoom, kPieceRoom});
    const double outLength = std::hypot(dx1, dy1);
    const PointD out = {dx1 / outLength, dy1 / outLength};
    PutQuad({}, AsPointD(Gdiplus::Point(dx1, dy1)), out);
    if (dx0 != 0 || dy0 != 0) {
        const double inLength = std::hypot(dx0, dy0);
        PutJoin({}, {dx0 / inLength, dy0 / inLength}, out, inLength, outLength);
    }
    m_sink = sink;
    m_box = box;
    JoinSpans(spans, first);
    piece.first = static_cast<std::uint32_t>(first);
    piece.count = static_cast<std::uint32_t>(spans.size() - first);
    Box bounds{kPieceRoom, kPieceRoom, -kPieceRoom, -kPieceRoom};
    for (std::size_t i = first; i < spans.size(); ++i) {
        bounds = {std::min(bounds.left, spans[i].x0), std::min(bounds.top, spans[i].y),
                  std::max(bounds.right, spans[i].x1), std::max(bounds.bottom, spans[i].y + 1)};
    }
    piece.left = static_cast<std::int16_t>(bounds.left);
    piece.top = static_cast<std::int16_t>(bounds.top);
    piece.right = static_cast<std::int16_t>(bounds.right);
    piece.bottom = static_cast<std::int16_t>(bounds.bottom);
    piece.isMade = true;
}

void Stroker::PutPiece(const Piece &piece, int x, int y) {
    const Span *const spans = m_store->spans.data() + piece.first;
    if (x + piece.left >= m_box.left && x + piece.right <= m_box.right && y + piece.top >= m_box.top &&
        y + piece.bottom <= m_box.bottom) [[likely]] {
        m_sink->Put(spans, piece.count, x, y);
        return;
    }
    if (x + piece.right <= m_box.left || x + piece.left >= m_box.right || y + piece.bottom <= m_box.top ||
        y + piece.top >= m_box.bottom) {
        return;
    }
    m_clipped.clear();
    for (const Span *s = spans; s != spans + piece.count; ++s) {
        const Span moved = {s->y + y, std::max(s->x0 + x, m_box.left), std::min(s->x1 + x, m_box.right)};
        if (moved.y >= m_box.top && moved.y < m_box.bottom && moved.x0 < moved.x1) m_clipped.push_back(moved);
    }
    if (!m_clipped.empty()) m_sink->Put(m_clipped.data(), m_clipped.size(), 0, 0);
}

bool Stroker::IsOutside(PointD a, PointD b) const {
    return std::max(a.x, b.x) + m_reach < m_box.left || std::min(a.x, b.x) - m_reach > m_box.right ||
           std::max(a.y, b.y) + m_reach < m_box.top || std::min(a.y, b.y) - m_reach > m_box.bottom;
}

void Stroker::PutSegment(PointD a, PointD b, PointD c, bool hasIn) {
    if (IsOutside(b, c)) return;
    const PointD out = c - b;
    const double outLength = std::hypot(out.x, out.y);
    const PointD outDirection = out * (1 / outLength);
    PutQuad(b, c, outDirection);
    if (!hasIn) return;
    const PointD in = b - a;
    const double inLength = std::hypot(in.x, in.y);
    PutJoin(b, in * (1 / inLength), outDirection, inLength, outLength);
}

template <class P>
void Stroker::DrawChain(const P *points, std::size_t count, bool closed) {
    // The ends of the last segment; equal as long as there is none.
    P before = points[0];
    P last = before;
    WalkChain(points, count, closed, [&](P a, P b, P c, bool hasIn) {
        if (!hasIn) {
            const PointD back = AsPointD(b) - AsPointD(c);
            PutCap(m_style.startCap, AsPointD(b), back * (1 / std::hypot(back.x, back.y)));
        }
        before = b;
        last = c;
        if constexpr (std::is_same_v<P, Gdiplus::Point>) {
            if (m_store != nullptr && IsShort(b, c) && (!hasIn || IsShort(a, b))) {
                if (!m_nearBox.Holds(b.X, b.Y)) return;
                const Gdiplus::Point in = hasIn ? b - a : Gdiplus::Point();
                PutPiece(PieceFor(in.X, in.Y, c.X - b.X, c.Y - b.Y), b.X, b.Y);
                return;
            }
        }
        PutSegment(AsPointD(a), AsPointD(b), AsPointD(c), hasIn);
    });
    if (before == last) {
        PutDot(AsPointD(before), closed);
    } else if (!closed) {
        const PointD forth = AsPointD(last) - AsPointD(before);
        PutCap(m_style.endCap, AsPointD(last), forth * (1 / std::hypot(forth.x, forth.y)));
    }
}

void Stroker::Draw(const StrokeStyle &style, const Gdiplus::Point *points, std::size_t count, bool closed,
                   const Box &box, SpanSink &sink) {
    SetUp(style, closed, box, sink);
    m_store = nullptr;
    if (m_reach + kShort < kPieceRoom) {
        const int room = static_cast<int>(m_reach) + 1 + kShort;
        m_nearBox = {box.left - room, box.top - room, box.right + room, box.bottom + room};
        m_store = &StoreFor(style, m_sweepsDisc);
    }
    DrawChain(points, closed ? WithoutClosingPoints(points, count) : count, closed);
}

void Stroker::Draw(const StrokeStyle &style, const PointD *points, std::size_t count, bool closed, const Box &box,
                   SpanSink &sink) {
    SetUp(style, closed, box, sink);
    m_store = nullptr;
    DrawChain(points, closed ? WithoutClosingPoints(points, count) : count, closed);
}

}  // namespace ktl::raster
