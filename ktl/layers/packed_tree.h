#pragma once

#include <vector>

#include "ktl/layers/tree_node.h"

namespace ktl {

/// A finished quadtree laid out flat, breadth first: the nodes' rectangles in one block and the stored positions in
/// another, in the order in which a query gives them. A query marks runs of nodes and copies their positions as blocks.
/// Where the window is sure to meet every node below a node, no node below it is tested.
class PackedTree {
  public:
    /// Copies what lies under `root`; the nodes are not needed afterwards.
    explicit PackedTree(const CTreeNode &root);

    /// Appends the candidates for `window` to `ids`, in the order of the breadth-first walk.
    void Find(const EXTENT &window, CArray<int, int> &ids) const;

  private:
    struct Bounds {
        double left;
        double bottom;
        double right;
        double top;
    };
    struct Run;
    class Walk;

    static bool Meets(const Bounds &bounds, const EXTENT &window);
    /// How many positions the nodes of `run` hold themselves.
    std::size_t GetIDCount(const Run &run) const;
    void Emit(const Walk &walk, CArray<int, int> &ids) const;

    /// The children of node i are the nodes m_firstChild[i] to m_firstChild[i + 1] - 1; likewise its positions.
    std::vector<int> m_firstChild;
    std::vector<int> m_firstID;
    std::vector<Bounds> m_extents;
    /// The innermost edges among a node and all nodes below it: a window that meets this rectangle, inverted as it
    /// mostly is, meets them all.
    std::vector<Bounds> m_inner;
    std::vector<int> m_ids;
};

}  // namespace ktl
