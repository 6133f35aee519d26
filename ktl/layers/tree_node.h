#pragma once

#include "ktl/core/extent.h"
#include "ktl/platform/array.h"
#include "ktl/platform/export.h"

/// One rectangle of a `CTree`: the positions stored at it and its children. It borrows its children: `CTree` makes and
/// deletes them, and deleting a node leaves them alone. A bad index throws `CInvalidArgException`.
class KTL_API CTreeNode {
  public:
    explicit CTreeNode(const CExtent &extent) : m_extent(extent) {}
    CTreeNode(const CTreeNode &) = delete;
    CTreeNode &operator=(const CTreeNode &) = delete;
    /// Empties the two arrays and does not recurse.
    ~CTreeNode() = default;

    /// The rectangle that the node covers; it may be inverted, see `CTree::SplitExtent`.
    const CExtent &GetExtent() const { return m_extent; }

    /// 0 for a node that is not split, otherwise 4, or fewer after trimming.
    int GetSubNodeCount() const { return m_subNodes.GetSize(); }
    /// New slots are null.
    void SetSubNodeCount(int count) { m_subNodes.SetSize(count); }
    /// The slot itself, so that a caller can store into it.
    CTreeNode *&GetSubNodeAt(int index) { return m_subNodes[index]; }
    CTreeNode *GetSubNodeAt(int index) const { return m_subNodes[index]; }
    /// Takes the slot out of the array and leaves the node that it points to alone.
    void RemoveSubNodeAt(int index) { m_subNodes.RemoveAt(index); }
    /// Replaces what `subNodes` held by this node's children, which stay the tree's.
    void GetSubNodeArray(CArray<CTreeNode *, CTreeNode *> &subNodes) const { subNodes.Copy(m_subNodes); }

    /// The positions stored at this node itself, in insertion order.
    int GetShapeIDCount() const { return m_shapeIDs.GetSize(); }
    void AddShapeID(int shapeID) { m_shapeIDs.Add(shapeID); }
    int &GetShapeIDAt(int index) { return m_shapeIDs[index]; }
    int GetShapeIDAt(int index) const { return m_shapeIDs[index]; }
    void RemoveShapeIDAt(int index) { m_shapeIDs.RemoveAt(index); }
    /// Replaces what `shapeIDs` held.
    void GetShapeIDArray(CArray<int, int> &shapeIDs) const { shapeIDs.Copy(m_shapeIDs); }

  private:
    friend class CTree;

    CArray<int, int> m_shapeIDs;
    CExtent m_extent;
    CArray<CTreeNode *, CTreeNode *> m_subNodes;
};
