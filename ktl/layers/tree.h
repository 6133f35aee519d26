#pragma once

#include <memory>

#include "ktl/layers/tree_node.h"

/// The quadtree of a shape layer: from a rectangle to the positions of the shapes whose bounding rectangles may lie in
/// it. It never sees a shape and never tests a stored object's own rectangle, only those of its nodes, so that a query
/// gives candidates; the caller tests each. There is no removal of one position: after an edit the owner makes a new
/// tree.
///
///     CTree tree;
///     tree.InitTree(layerExtent, shapeCount, 20);
///     for (int i = 0; i < shapeCount; ++i) tree.AddToTreeNode(shapes[i]->GetExtent(), i);
///     tree.TrimNullTreeNode();
///     CArray<int, int> candidates;
///     tree.FindShapeID(window, candidates);
///
/// A copy shares the nodes of the original, and the first of the two that is destroyed takes the nodes away: the other
/// one then finds nothing and must not be used. No locks; queries may run side by side while nobody changes the tree.
class KTL_API CTree {
  public:
    /// Depth 0 and no root.
    CTree() = default;
    /// Share the nodes; nothing is copied but the depth and the way to the root.
    CTree(const CTree &other) = default;
    CTree &operator=(const CTree &other) = default;
    /// Deletes the nodes, also those that copies share.
    ~CTree();

    /// Makes the root and the depth. Called once per object: an earlier root is not destroyed by it and is out of
    /// reach afterwards.
    virtual void InitTree(CExtent extent, int shapeCount, int maxPerNode);
    /// The depth is the smallest d for which maxPerNode * (4^d - 1) / 3 reaches `shapeCount`. `maxPerNode` sizes the
    /// tree and limits nothing; a value below 1 counts as 1.
    void CalcTreeDepth(int shapeCount, int maxPerNode);

    /// A new node without children. The caller owns it until it is stored in a node of a tree, and deletes it with
    /// `DestroyTree`.
    CTreeNode *CreateTreeNode(CExtent extent);
    /// Gives `node` four new children with the rectangles of `SplitExtent`; children that it had are not deleted.
    void CreateSubTreeNode(CTreeNode *node);

    /// Stores `shapeID` at the deepest node that takes `extent`, starting at the root; without a root nothing happens.
    void AddToTreeNode(CExtent extent, int shapeID);
    /// The same from `node` down, which counts as lying on `level` (the root has 0). The first child that contains
    /// `extent` wins. Every node that is reached gets its four children, also on the last level.
    void AddToTreeNode(CTreeNode *node, CExtent const &extent, int const &shapeID, int level);

    /// Deletes the nodes without positions and children; the root stays. Queries after it are fastest: it also lays
    /// the tree out flat, and that copy serves them until the next insertion.
    void TrimNullTreeNode(void);
    /// Trims below `node`; 1 if nothing is left in it, and then the caller deletes it.
    int TrimNullTreeNode(CTreeNode *node);

    /// Appends the candidates for `extent` to `ids`: level by level, on a level in the order of the walk, at a node in
    /// insertion order. Outside the root's rectangle there are none.
    void FindShapeID(CExtent extent, CArray<int, int> &ids);

    /// Deletes the nodes; the tree must not be used afterwards.
    void DestroyTree(void);
    /// Deletes `node` and all nodes below it; null is allowed.
    void DestroyTree(CTreeNode *node);

    /// The rectangles of a node's four children: upper left, upper right, lower right, lower left. Their width comes
    /// from `right` minus `bottom`, and e2 ends at 0.45 of the height where e3 goes on to 0.55; both are meant. So the
    /// children overlap, need not cover `extent`, and may be inverted.
    void SplitExtent(CExtent extent, CExtent &e0, CExtent &e1, CExtent &e2, CExtent &e3);
    /// 1 if `object` lies in `container`, edges included.
    int CheckObjectContained(CExtent object, CExtent container);
    /// 1 if the rectangles meet; touching is enough.
    int Intersect(CExtent a, CExtent b);

  private:
    struct Graph;

    int m_depth = 0;
    std::shared_ptr<Graph> m_graph;
};
