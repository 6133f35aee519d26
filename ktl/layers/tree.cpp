#include "ktl/layers/tree.h"

#include <array>
#include <cstdint>
#include <vector>

#include "ktl/layers/packed_tree.h"

namespace {

constexpr int kSubNodeCount = 4;

void DeleteNodes(CTreeNode *node) {
    if (!node) return;
    for (int i = 0; i < node->GetSubNodeCount(); ++i) DeleteNodes(node->GetSubNodeAt(i));
    delete node;
}

int Contains(const EXTENT &container, const EXTENT &object) {
    return container.left <= object.left && container.right >= object.right && container.bottom <= object.bottom &&
           container.top >= object.top;
}

/// Not-a-number meets everything, since no edge of it lies beyond another.
int Meets(const EXTENT &a, const EXTENT &b) {
    return !(a.left > b.right || a.right < b.left || a.bottom > b.top || a.top < b.bottom);
}

/// The breadth-first walk over the nodes themselves, for a tree that has not been laid out flat.
void FindInNodes(CTreeNode *root, const EXTENT &window, CArray<int, int> &ids) {
    CArray<int, int> nodeIDs;
    std::vector<const CTreeNode *> current{root};
    std::vector<const CTreeNode *> next;
    while (!current.empty()) {
        for (const CTreeNode *node : current) {
            if (!Meets(node->GetExtent(), window)) continue;
            node->GetShapeIDArray(nodeIDs);
            ids.Append(nodeIDs);
            for (int i = 0; i < node->GetSubNodeCount(); ++i) {
                const CTreeNode *subNode = node->GetSubNodeAt(i);
                if (subNode && Meets(subNode->GetExtent(), window)) next.push_back(subNode);
            }
        }
        current.swap(next);
        next.clear();
    }
}

}  // namespace

/// What copies of a tree share. Whoever deletes the nodes leaves `root` null, so that nobody deletes them again.
struct CTree::Graph {
    explicit Graph(CTreeNode *node) : root(node) {}
    Graph(const Graph &) = delete;
    Graph &operator=(const Graph &) = delete;
    ~Graph() { Clear(); }

    void Clear() {
        packed.reset();
        DeleteNodes(root);
        root = nullptr;
    }

    CTreeNode *root;
    std::unique_ptr<ktl::PackedTree> packed;
};

CTree::~CTree() {
    DestroyTree();
}

void CTree::InitTree(CExtent extent, int shapeCount, int maxPerNode) {
    auto root = std::unique_ptr<CTreeNode>(CreateTreeNode(extent));
    m_graph = std::make_shared<Graph>(root.get());
    root.release();
    CalcTreeDepth(shapeCount, maxPerNode);
}

void CTree::CalcTreeDepth(int shapeCount, int maxPerNode) {
    m_depth = 0;
    std::int64_t capacity = 0;
    std::int64_t levelSize = 1;
    while (capacity < shapeCount) {
        capacity += (maxPerNode > 0 ? maxPerNode : 1) * levelSize;
        levelSize *= 4;
        ++m_depth;
    }
}

CTreeNode *CTree::CreateTreeNode(CExtent extent) {
    return new CTreeNode(extent);
}

void CTree::CreateSubTreeNode(CTreeNode *node) {
    std::array<CExtent, kSubNodeCount> extents;
    SplitExtent(node->GetExtent(), extents[0], extents[1], extents[2], extents[3]);
    node->SetSubNodeCount(kSubNodeCount);
    for (int i = 0; i < kSubNodeCount; ++i) node->GetSubNodeAt(i) = CreateTreeNode(extents[static_cast<unsigned>(i)]);
}

void CTree::AddToTreeNode(CExtent extent, int shapeID) {
    if (!m_graph || !m_graph->root) return;
    m_graph->packed.reset();
    AddToTreeNode(m_graph->root, extent, shapeID, 0);
}

void CTree::AddToTreeNode(CTreeNode *node, CExtent const &extent, int const &shapeID, int level) {
    for (CTreeNode *taker = node; taker; ++level) {
        node = taker;
        taker = nullptr;
        if (node->GetSubNodeCount() == 0) CreateSubTreeNode(node);
        if (level + 1 >= m_depth) break;
        for (CTreeNode *subNode : node->m_subNodes) {
            if (subNode && Contains(subNode->m_extent, extent)) {
                taker = subNode;
                break;
            }
        }
    }
    node->AddShapeID(shapeID);
}

void CTree::TrimNullTreeNode(void) {
    if (!m_graph || !m_graph->root) return;
    TrimNullTreeNode(m_graph->root);
    m_graph->packed = std::make_unique<ktl::PackedTree>(*m_graph->root);
}

int CTree::TrimNullTreeNode(CTreeNode *node) {
    if (!node) return 1;
    for (int i = 0; i < node->GetSubNodeCount();) {
        if (TrimNullTreeNode(node->GetSubNodeAt(i))) {
            delete node->GetSubNodeAt(i);
            node->RemoveSubNodeAt(i);
        } else {
            ++i;
        }
    }
    return node->GetShapeIDCount() == 0 && node->GetSubNodeCount() == 0;
}

void CTree::FindShapeID(CExtent extent, CArray<int, int> &ids) {
    if (!m_graph || !m_graph->root) return;
    if (m_graph->packed) {
        m_graph->packed->Find(extent, ids);
    } else {
        FindInNodes(m_graph->root, extent, ids);
    }
}

void CTree::DestroyTree(void) {
    if (m_graph) m_graph->Clear();
}

void CTree::DestroyTree(CTreeNode *node) {
    DeleteNodes(node);
}

void CTree::SplitExtent(CExtent extent, CExtent &e0, CExtent &e1, CExtent &e2, CExtent &e3) {
    e0 = e1 = e2 = e3 = extent;
    const double w = extent.right - extent.bottom;
    const double h = extent.top - extent.bottom;
    e0.right = extent.left + 0.55 * w;
    e0.bottom = extent.bottom + 0.45 * h;
    e1.left = extent.left + 0.45 * w;
    e1.bottom = extent.bottom + 0.45 * h;
    e2.left = extent.left + 0.45 * w;
    e2.top = extent.bottom + 0.45 * h;
    e3.right = extent.left + 0.55 * w;
    e3.top = extent.bottom + 0.55 * h;
}

int CTree::CheckObjectContained(CExtent object, CExtent container) {
    return Contains(container, object);
}

int CTree::Intersect(CExtent a, CExtent b) {
    return Meets(a, b);
}
