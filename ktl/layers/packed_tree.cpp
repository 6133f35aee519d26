#include "ktl/layers/packed_tree.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory_resource>

namespace ktl {

/// Nodes first to last - 1 of one level. `sure`: the window meets all that lies below them.
struct PackedTree::Run {
    int first;
    int last;
    bool sure;
};

/// The queue of one query. Runs of the level under way lie before those of the next one.
class PackedTree::Walk {
  public:
    explicit Walk(std::pmr::memory_resource *memory) : m_runs(memory) { m_runs.reserve(64); }

    std::size_t GetSize() const { return m_runs.size(); }
    const Run &operator[](std::size_t index) const { return m_runs[index]; }
    /// From here on, runs belong to the next level and don't join with those before.
    void BeginLevel() { m_levelBegin = m_runs.size(); }
    void Push(int first, int last, bool sure) {
        if (first == last) return;
        if (sure && m_runs.size() > m_levelBegin && m_runs.back().sure && m_runs.back().last == first) {
            m_runs.back().last = last;
        } else {
            m_runs.push_back({first, last, sure});
        }
    }

  private:
    std::pmr::vector<Run> m_runs;
    std::size_t m_levelBegin = 0;
};

PackedTree::PackedTree(const CTreeNode &root) {
    std::vector<const CTreeNode *> nodes{&root};
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const CTreeNode &node = *nodes[i];
        const CExtent &extent = node.GetExtent();
        m_firstChild.push_back(static_cast<int>(nodes.size()));
        m_firstID.push_back(static_cast<int>(m_ids.size()));
        m_extents.push_back({extent.left, extent.bottom, extent.right, extent.top});
        for (int k = 0; k < node.GetShapeIDCount(); ++k) m_ids.push_back(node.GetShapeIDAt(k));
        for (int k = 0; k < node.GetSubNodeCount(); ++k) {
            if (node.GetSubNodeAt(k)) nodes.push_back(node.GetSubNodeAt(k));
        }
    }
    m_firstChild.push_back(static_cast<int>(nodes.size()));
    m_firstID.push_back(static_cast<int>(m_ids.size()));

    m_inner = m_extents;
    for (std::size_t i = nodes.size(); i-- > 0;) {
        Bounds &inner = m_inner[i];
        for (int k = m_firstChild[i]; k < m_firstChild[i + 1]; ++k) {
            const Bounds &child = m_inner[static_cast<std::size_t>(k)];
            inner.left = std::fmax(inner.left, child.left);
            inner.bottom = std::fmax(inner.bottom, child.bottom);
            inner.right = std::fmin(inner.right, child.right);
            inner.top = std::fmin(inner.top, child.top);
        }
    }
}

bool PackedTree::Meets(const Bounds &bounds, const EXTENT &window) {
    return !(bounds.left > window.right || bounds.right < window.left || bounds.bottom > window.top ||
             bounds.top < window.bottom);
}

void PackedTree::Find(const EXTENT &window, CArray<int, int> &ids) const {
    std::array<std::byte, 16384> stack;
    std::pmr::monotonic_buffer_resource memory(stack.data(), stack.size());
    Walk walk(&memory);

    if (!Meets(m_extents[0], window)) return;
    walk.Push(0, 1, Meets(m_inner[0], window));
    for (std::size_t head = 0; head < walk.GetSize();) {
        const std::size_t levelEnd = walk.GetSize();
        walk.BeginLevel();
        for (; head < levelEnd; ++head) {
            const Run run = walk[head];
            const int first = m_firstChild[static_cast<std::size_t>(run.first)];
            const int last = m_firstChild[static_cast<std::size_t>(run.last)];
            if (run.sure) {
                walk.Push(first, last, true);
                continue;
            }
            for (int child = first; child < last; ++child) {
                const auto at = static_cast<std::size_t>(child);
                if (Meets(m_extents[at], window)) walk.Push(child, child + 1, Meets(m_inner[at], window));
            }
        }
    }
    Emit(walk, ids);
}

void PackedTree::Emit(const Walk &walk, CArray<int, int> &ids) const {
    std::size_t count = 0;
    for (std::size_t i = 0; i < walk.GetSize(); ++i) count += GetIDCount(walk[i]);
    if (count == 0) return;
    int *out = ids.Extend(static_cast<int>(count));
    for (std::size_t i = 0; i < walk.GetSize(); ++i) {
        out = std::copy_n(m_ids.data() + m_firstID[static_cast<std::size_t>(walk[i].first)], GetIDCount(walk[i]), out);
    }
}

std::size_t PackedTree::GetIDCount(const Run &run) const {
    return static_cast<std::size_t>(m_firstID[static_cast<std::size_t>(run.last)] -
                                    m_firstID[static_cast<std::size_t>(run.first)]);
}

}  // namespace ktl
