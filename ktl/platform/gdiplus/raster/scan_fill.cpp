#include "ktl/platform/gdiplus/raster/scan_fill.h"

namespace ktl::raster {

void ScanFill::Begin(const Box &box) {
    m_box = box;
    const auto rows = static_cast<std::size_t>(box.Height());
    if (m_heads.size() < rows) {
        m_heads.resize(rows, -1);
        m_leftWinding.resize(rows + 1, 0);
    }
    m_first = m_last = 0;
    m_used = 0;
    m_overflowed = false;
}

bool ScanFill::Reserve(int rows) {
    // One row alone must always do, whatever its number of crossings: bands cannot be lower.
    if (m_used + rows > kMaxNodes && m_box.Height() > 1) {
        m_overflowed = true;
        return false;
    }
    const auto need = static_cast<std::size_t>(m_used + rows);
    if (need > m_nodes.size()) m_nodes.resize(std::max<std::size_t>(need, std::max<std::size_t>(4096, m_used * 2)));
    return true;
}

inline void ScanFill::Touch(int first, int last) {
    if (m_first == m_last) {
        m_first = first;
        m_last = last;
    } else {
        m_first = std::min(m_first, first);
        m_last = std::max(m_last, last);
    }
}

template <int kUnit>
inline void ScanFill::AddEdge(std::int64_t x0, std::int64_t y0, std::int64_t x1, std::int64_t y1, int upward) {
    const std::int64_t top = std::max<std::int64_t>(m_box.top, CeilUnit<kUnit>(y0));
    const std::int64_t bottom = std::min<std::int64_t>(m_box.bottom, CeilUnit<kUnit>(y1));
    if (top >= bottom) return;
    const std::int64_t beyond = static_cast<std::int64_t>(m_box.right - 1) * kUnit;
    if (x0 > beyond && x1 > beyond) return;
    const int first = static_cast<int>(top);
    const int last = static_cast<int>(bottom);
    Touch(first - m_box.top, last - m_box.top);
    const std::int64_t before = static_cast<std::int64_t>(m_box.left) * kUnit;
    if (x0 <= before && x1 <= before) {
        const int direction = upward != 0 ? -1 : 1;
        m_leftWinding[static_cast<std::size_t>(first - m_box.top)] += direction;
        m_leftWinding[static_cast<std::size_t>(last - m_box.top)] -= direction;
        return;
    }
    if (static_cast<std::size_t>(m_used + (last - first)) > m_nodes.size() || m_used + (last - first) > kMaxNodes) {
        if (!Reserve(last - first)) return;
    }
    Node *const nodes = m_nodes.data();
    int *const heads = m_heads.data() - m_box.top;
    int used = m_used;
    auto crossing = [&](int row, int column) {
        nodes[used] = {column * 2 + upward, heads[row]};
        heads[row] = used++;
    };
    WalkEdge<kUnit>(x0, y0, x1, y1, first, last, m_box.left, m_box.right, crossing);
    m_used = used;
}

void ScanFill::AddRing(const Gdiplus::Point *points, std::size_t count) {
    if (count < 3 || m_overflowed) return;
    int x0 = points[count - 1].X;
    int y0 = points[count - 1].Y;
    for (std::size_t i = 0; i < count; ++i) {
        const int x1 = points[i].X;
        const int y1 = points[i].Y;
        if (y0 < y1) {
            AddEdge<1>(x0, y0, x1, y1, 0);
        } else if (y0 > y1) {
            AddEdge<1>(x1, y1, x0, y0, 1);
        }
        x0 = x1;
        y0 = y1;
    }
}

void ScanFill::AddRing(const FixedPoint *points, std::size_t count) {
    if (count < 3 || m_overflowed) return;
    FixedPoint a = points[count - 1];
    for (std::size_t i = 0; i < count; ++i) {
        const FixedPoint b = points[i];
        if (a.y < b.y) {
            AddEdge<kSubpixels>(a.x, a.y, b.x, b.y, 0);
        } else if (a.y > b.y) {
            AddEdge<kSubpixels>(b.x, b.y, a.x, a.y, 1);
        }
        a = b;
    }
}

std::size_t ScanFill::Gather(int head) {
    std::size_t count = 0;
    for (int i = head; i >= 0; i = m_nodes[static_cast<std::size_t>(i)].next) {
        if (count == m_keys.size()) m_keys.resize(std::max<std::size_t>(64, count * 2));
        m_keys[count++] = m_nodes[static_cast<std::size_t>(i)].key;
    }
    int *const keys = m_keys.data();
    if (count == 2) {
        if (keys[0] > keys[1]) std::swap(keys[0], keys[1]);
    } else if (count > 48) {
        std::sort(keys, keys + count);
    } else {
        for (std::size_t i = 1; i < count; ++i) {
            const int key = keys[i];
            std::size_t at = i;
            for (; at > 0 && keys[at - 1] > key; --at) keys[at] = keys[at - 1];
            keys[at] = key;
        }
    }
    return count;
}

void ScanFill::Discard() {
    for (int i = m_first; i < m_last; ++i) {
        m_heads[static_cast<std::size_t>(i)] = -1;
        m_leftWinding[static_cast<std::size_t>(i)] = 0;
    }
    if (m_last > m_first) m_leftWinding[static_cast<std::size_t>(m_last)] = 0;
    m_first = m_last = 0;
    m_used = 0;
    m_overflowed = false;
}

}  // namespace ktl::raster
