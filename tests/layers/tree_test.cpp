#include "ktl/layers/tree.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::vector<int> ToVector(const CArray<int, int> &ids) {
    return {ids.begin(), ids.end()};
}

std::vector<int> Find(CTree &tree, const CExtent &window) {
    CArray<int, int> ids;
    tree.FindShapeID(window, ids);
    return ToVector(ids);
}

/// Makes a tree of nodes that the test holds itself, so that it can look at them.
struct OwnNodes {
    explicit OwnNodes(const CExtent &extent, int shapeCount = 1701) : root(tree.CreateTreeNode(extent)) {
        tree.CalcTreeDepth(shapeCount, 20);
    }
    ~OwnNodes() { tree.DestroyTree(root); }

    void Add(const CExtent &extent, int id) { tree.AddToTreeNode(root, extent, id, 0); }

    CTree tree;
    CTreeNode *root;
};

/// The path of sub-node numbers to the node that holds `id`: "" for the root, "31" for a child's child; "-" if none.
std::string PathOf(const CTreeNode &node, int id) {
    for (int i = 0; i < node.GetShapeIDCount(); ++i) {
        if (node.GetShapeIDAt(i) == id) return "";
    }
    for (int i = 0; i < node.GetSubNodeCount(); ++i) {
        const std::string rest = PathOf(*node.GetSubNodeAt(i), id);
        if (rest != "-") return std::to_string(i) + rest;
    }
    return "-";
}

/// The tree by its rules and nothing else, as slow as it comes.
class ReferenceTree {
  public:
    ReferenceTree(const CExtent &extent, int shapeCount, int maxPerNode) : m_root(std::make_unique<Node>(extent)) {
        double sum = 0;
        double size = 1;
        for (; sum < shapeCount; size *= 4, ++m_depth) sum += maxPerNode * size;
    }
    void Add(const CExtent &extent, int id) { Add(*m_root, extent, id, 0); }

    std::vector<int> Find(const CExtent &window) const {
        std::vector<int> ids;
        std::vector<const Node *> level;
        if (Meets(m_root->extent, window)) level.push_back(m_root.get());
        while (!level.empty()) {
            std::vector<const Node *> below;
            for (const Node *node : level) {
                ids.insert(ids.end(), node->ids.begin(), node->ids.end());
                for (const auto &child : node->children) {
                    if (Meets(child->extent, window)) below.push_back(child.get());
                }
            }
            level = below;
        }
        return ids;
    }

  private:
    struct Node {
        explicit Node(const CExtent &e) : extent(e) {}
        CExtent extent;
        std::vector<int> ids;
        std::vector<std::unique_ptr<Node>> children;
    };

    static bool Meets(const CExtent &a, const CExtent &b) {
        if (a.left > b.right || a.right < b.left) return false;
        if (a.bottom > b.top || a.top < b.bottom) return false;
        return true;
    }
    static bool Holds(const CExtent &outer, const CExtent &inner) {
        return outer.left <= inner.left && inner.right <= outer.right && outer.bottom <= inner.bottom &&
               inner.top <= outer.top;
    }
    static void Split(Node &node) {
        const CExtent &e = node.extent;
        const double w = e.right - e.bottom;
        const double h = e.top - e.bottom;
        const CExtent children[] = {{e.left, e.bottom + 0.45 * h, e.left + 0.55 * w, e.top},
                                    {e.left + 0.45 * w, e.bottom + 0.45 * h, e.right, e.top},
                                    {e.left + 0.45 * w, e.bottom, e.right, e.bottom + 0.45 * h},
                                    {e.left, e.bottom, e.left + 0.55 * w, e.bottom + 0.55 * h}};
        for (const CExtent &child : children) node.children.push_back(std::make_unique<Node>(child));
    }
    void Add(Node &node, const CExtent &extent, int id, int level) {
        if (node.children.empty()) Split(node);
        for (const auto &child : node.children) {
            if (Holds(child->extent, extent) && level + 1 < m_depth) return Add(*child, extent, id, level + 1);
        }
        node.ids.push_back(id);
    }

    int m_depth = 0;
    std::unique_ptr<Node> m_root;
};

struct Sampler {
    explicit Sampler(unsigned seed) : engine(seed) {}
    double Between(double low, double high) { return std::uniform_real_distribution<double>(low, high)(engine); }
    /// A rectangle in `area` whose sides are up to `share` of the area's.
    CExtent Rect(const CExtent &area, double share) {
        const double w = (area.right - area.left) * Between(0, share);
        const double h = (area.top - area.bottom) * Between(0, share);
        const double x = Between(area.left, area.right - w);
        const double y = Between(area.bottom, area.top - h);
        return {x, y, x + w, y + h};
    }
    std::mt19937 engine;
};

TEST(TreeDepth, FollowsTheCapacityOfTheLevels) {
    const struct {
        int shapeCount, maxPerNode, depth;
    } cases[] = {{20, 20, 1},         {21, 20, 2},          {100, 20, 2},  {101, 20, 3},  {420, 20, 3}, {421, 20, 4},
                 {1700, 20, 4},       {1701, 20, 5},        {6820, 20, 5}, {6821, 20, 6}, {5, 1, 2},    {6, 1, 3},
                 {2147483647, 1, 17}, {2147483647, 20, 15}, {5, 0, 2},     {6, -7, 3},    {0, 20, 1},   {-5, 20, 1}};
    for (const auto &c : cases) {
        CTree tree;
        tree.CalcTreeDepth(c.shapeCount, c.maxPerNode);
        CTreeNode *root = tree.CreateTreeNode(CExtent(0, 0, 1, 1));
        tree.AddToTreeNode(root, CExtent(0, 0, 0, 0), 7, 0);
        EXPECT_EQ(PathOf(*root, 7), std::string(static_cast<std::size_t>(c.depth - 1), '3'))
            << c.shapeCount << " by " << c.maxPerNode;
        tree.DestroyTree(root);
    }
}

TEST(TreeSplit, TakesTheWidthFromRightMinusBottom) {
    CTree tree;
    const struct {
        CExtent source, parts[4];
    } cases[] = {
        {{0, 0, 100, 100}, {{0, 45, 55, 100}, {45, 45, 100, 100}, {45, 0, 100, 45}, {0, 0, 55, 55}}},
        {{10, 20, 120, 60}, {{10, 38, 65, 60}, {55, 38, 120, 60}, {55, 20, 120, 38}, {10, 20, 65, 42}}},
        {{80, 20, 120, 60}, {{80, 38, 135, 60}, {125, 38, 120, 60}, {125, 20, 120, 38}, {80, 20, 135, 42}}},
        {{-180, -100, 180, 100},
         {{-180, -10, -26, 100}, {-54, -10, 180, 100}, {-54, -100, 180, -10}, {-180, -100, -26, 10}}},
    };
    for (const auto &c : cases) {
        CExtent e[4];
        tree.SplitExtent(c.source, e[0], e[1], e[2], e[3]);
        for (int i = 0; i < 4; ++i) {
            const CExtent &want = c.parts[i];
            EXPECT_NEAR(e[i].left, want.left, 1e-12) << i;
            EXPECT_NEAR(e[i].bottom, want.bottom, 1e-12) << i;
            EXPECT_NEAR(e[i].right, want.right, 1e-12) << i;
            EXPECT_NEAR(e[i].top, want.top, 1e-12) << i;
        }
    }
}

TEST(TreeTests, EdgesCountAndNotANumberMeetsAll) {
    CTree tree;
    const CExtent box(0, 0, 10, 20);
    const struct {
        CExtent other;
        int contained, meets;
    } cases[] = {{{0, 0, 10, 20}, 1, 1},          {{1, 1, 9, 19}, 1, 1},     {{-1, 1, 9, 19}, 0, 1},
                 {{1, 1, 11, 19}, 0, 1},          {{1, -1, 9, 19}, 0, 1},    {{1, 1, 9, 21}, 0, 1},
                 {{10, 20, 12, 22}, 0, 1},        {{-5, -5, 0, 0}, 0, 1},    {{10.5, 0, 12, 20}, 0, 0},
                 {{0, 20.5, 10, 22}, 0, 0},       {{0, -3, 10, -0.5}, 0, 0}, {{-3, 0, -0.5, 20}, 0, 0},
                 {{kNaN, kNaN, kNaN, kNaN}, 0, 1}};
    for (const auto &c : cases) {
        EXPECT_EQ(tree.CheckObjectContained(c.other, box), c.contained) << c.other.left << ' ' << c.other.bottom;
        EXPECT_EQ(tree.Intersect(c.other, box), c.meets) << c.other.left << ' ' << c.other.bottom;
        EXPECT_EQ(tree.Intersect(box, c.other), c.meets) << c.other.left << ' ' << c.other.bottom;
    }
}

TEST(TreeInsertion, FirstChildThatContainsWins) {
    const struct {
        CExtent object;
        const char *path;
    } cases[] = {
        {{50, 50, 51, 51}, "0"},    // fits all of e0, e1, e3
        {{0, 45, 55, 100}, "0"},    // exactly e0
        {{45, 45, 100, 100}, "1"},  // exactly e1
        {{50, 20, 52, 45}, "2"},    // e2 ends at 45 ...
        {{50, 20, 52, 46}, "3"},    // ... and e3 at 55
        {{0, 0, 100, 100}, ""},    {{40, 40, 60, 60}, ""}, {{-5, 1, 1, 2}, ""}, {{kNaN, 1, 2, 3}, ""},
    };
    for (const auto &c : cases) {
        OwnNodes nodes(CExtent(0, 0, 100, 100), 21);
        nodes.Add(c.object, 1);
        EXPECT_EQ(PathOf(*nodes.root, 1), c.path) << c.object.left << ' ' << c.object.bottom;
    }
}

TEST(TreeInsertion, LastLevelGetsChildrenTooAndTrimmingTakesThem) {
    OwnNodes nodes(CExtent(0, 0, 100, 100), 21);
    nodes.Add(CExtent(1, 1, 2, 2), 5);
    ASSERT_EQ(nodes.root->GetSubNodeCount(), 4);
    CTreeNode *leaf = nodes.root->GetSubNodeAt(3);
    EXPECT_EQ(leaf->GetSubNodeCount(), 4);
    EXPECT_EQ(nodes.root->GetSubNodeAt(0)->GetSubNodeCount(), 0);

    nodes.Add(CExtent(1, 98, 2, 99), 6);
    EXPECT_EQ(nodes.tree.TrimNullTreeNode(nodes.root), 0);
    ASSERT_EQ(nodes.root->GetSubNodeCount(), 2);
    EXPECT_EQ(nodes.root->GetSubNodeAt(1), leaf);
    EXPECT_EQ(leaf->GetSubNodeCount(), 0);

    leaf->RemoveShapeIDAt(0);
    nodes.root->GetSubNodeAt(0)->RemoveShapeIDAt(0);
    EXPECT_EQ(nodes.tree.TrimNullTreeNode(nodes.root), 1);
    EXPECT_EQ(nodes.root->GetSubNodeCount(), 0);
    EXPECT_THROW(nodes.root->GetSubNodeAt(0), CInvalidArgException);
}

TEST(TreeNode, ArrayGettersReplaceAndSlotsAreWritable) {
    OwnNodes nodes(CExtent(0, 0, 1, 1));
    nodes.root->AddShapeID(3);
    nodes.root->AddShapeID(4);
    nodes.root->GetShapeIDAt(1) = 9;
    CArray<int, int> ids;
    ids.Add(77);
    nodes.root->GetShapeIDArray(ids);
    EXPECT_EQ(ToVector(ids), (std::vector<int>{3, 9}));

    nodes.root->SetSubNodeCount(2);
    EXPECT_EQ(nodes.root->GetSubNodeAt(0), nullptr);
    nodes.root->GetSubNodeAt(1) = nodes.tree.CreateTreeNode(CExtent(0, 0, 1, 1));
    CArray<CTreeNode *, CTreeNode *> subNodes;
    nodes.root->GetSubNodeArray(subNodes);
    EXPECT_EQ(subNodes.GetSize(), 2);
    EXPECT_EQ(subNodes[1], nodes.root->GetSubNodeAt(1));
}

TEST(TreeQuery, GivesWhatTheRulesGiveInTheirOrder) {
    const CExtent roots[] = {{0, 0, 1, 1},      {-0.5, -0.5, 0.5, 0.5}, {-180, -90, 180, 90},
                             {73, 18, 135, 54}, {30, 2, 40, 2.5},       {-40, 100, 60, 300},
                             {-2, 5, -1, 6},    {3, 3, 3, 3},           {-1e300, -1e300, 1e300, 1e300}};
    for (unsigned seed = 0; seed < std::size(roots) * 2; ++seed) {
        const CExtent &root = roots[seed / 2];
        const int count = seed % 2 ? 6000 : 150;
        const int maxPerNode = seed % 2 ? 1 : 20;
        SCOPED_TRACE("seed " + std::to_string(seed));
        Sampler sampler(seed);
        CTree tree;
        tree.InitTree(root, count, maxPerNode);
        ReferenceTree reference(root, count, maxPerNode);
        std::vector<CExtent> objects;
        for (int i = 0; i < count; ++i) {
            objects.push_back(sampler.Rect(root, i % 10 == 0 ? 0.6 : 0.02));
            if (i % 50 == 7) objects.back().Offset(root.right - root.left, 0);
            tree.AddToTreeNode(objects.back(), i);
            reference.Add(objects.back(), i);
        }
        std::vector<CExtent> windows = {root,
                                        {root.right, root.bottom, root.right + 1, root.top},
                                        {root.right + 1, root.top + 1, root.right + 2, root.top + 2},
                                        {root.left, root.top, root.left, root.top},
                                        {-kInfinity, -kInfinity, kInfinity, kInfinity},
                                        {kNaN, kNaN, kNaN, kNaN},
                                        {root.right, root.top, root.left, root.bottom}};
        for (int i = 0; i < 60; ++i) windows.push_back(sampler.Rect(root, i % 3 ? 0.05 : 0.9));
        // A window that just touches the edge of a child.
        windows.emplace_back(root.left, root.bottom + 0.45 * root.Height(), root.right,
                             root.bottom + 0.45 * root.Height());

        std::size_t found = 0;
        std::vector<std::vector<int>> wanted;
        for (const CExtent &window : windows) {
            wanted.push_back(reference.Find(window));
            found += wanted.back().size();
            ASSERT_EQ(Find(tree, window), wanted.back());
        }
        EXPECT_GT(found, windows.size());
        tree.TrimNullTreeNode();
        for (std::size_t i = 0; i < windows.size(); ++i) ASSERT_EQ(Find(tree, windows[i]), wanted[i]) << i;

        // An insertion into a trimmed tree is found as well, before and after the next trimming.
        const CExtent late = sampler.Rect(root, 0.01);
        tree.AddToTreeNode(late, count);
        const std::vector<int> before = Find(tree, root);
        EXPECT_EQ(before.size(), static_cast<std::size_t>(count) + 1);
        tree.TrimNullTreeNode();
        EXPECT_EQ(Find(tree, root), before);
    }
}

TEST(TreeQuery, MissesNoObjectThatTheWindowMeets) {
    const CExtent root(-180, -90, 180, 90);
    Sampler sampler(99);
    CTree tree;
    tree.InitTree(root, 2000, 20);
    std::vector<CExtent> objects;
    for (int i = 0; i < 2000; ++i) {
        objects.push_back(sampler.Rect(root, 0.1));
        tree.AddToTreeNode(objects.back(), i);
    }
    tree.TrimNullTreeNode();
    for (int k = 0; k < 200; ++k) {
        const CExtent window = sampler.Rect(root, 0.2);
        std::vector<int> hits(objects.size());
        for (int id : Find(tree, window)) ++hits[static_cast<std::size_t>(id)];
        for (std::size_t i = 0; i < objects.size(); ++i) {
            ASSERT_LE(hits[i], 1);
            ASSERT_TRUE(hits[i] || !tree.Intersect(objects[i], window)) << i;
        }
    }
}

TEST(TreeQuery, AppendsAndNeverClears) {
    CTree tree;
    CArray<int, int> ids;
    ids.Add(-1);
    tree.FindShapeID(CExtent(0, 0, 1, 1), ids);
    EXPECT_EQ(ToVector(ids), std::vector<int>{-1});

    tree.InitTree(CExtent(0, 0, 10, 10), 2, 20);
    tree.AddToTreeNode(CExtent(1, 1, 2, 2), 6);
    tree.AddToTreeNode(CExtent(50, 50, 51, 51), 7);
    for (bool trimmed : {false, true}) {
        if (trimmed) tree.TrimNullTreeNode();
        ids.RemoveAll();
        ids.Add(-1);
        tree.FindShapeID(CExtent(9, 9, 9, 9), ids);
        tree.FindShapeID(CExtent(50, 50, 51, 51), ids);  // an object is there, but the root is not
        tree.FindShapeID(CExtent(0, 0, 1, 1), ids);
        EXPECT_EQ(ToVector(ids), (std::vector<int>{-1, 6, 7, 6, 7})) << trimmed;
    }
}

TEST(TreeLife, EmptyTreeKeepsItsRoot) {
    CTree tree;
    tree.AddToTreeNode(CExtent(0, 0, 1, 1), 1);  // no root yet: nowhere to go
    tree.TrimNullTreeNode();
    tree.InitTree(CExtent(0, 0, 1, 1), 0, 20);
    tree.TrimNullTreeNode();
    EXPECT_TRUE(Find(tree, CExtent(0, 0, 1, 1)).empty());
    tree.AddToTreeNode(CExtent(0, 0, 1, 1), 1);
    EXPECT_EQ(Find(tree, CExtent(0, 0, 1, 1)), std::vector<int>{1});
}

TEST(TreeLife, CopiesShareTheNodesUntilOneIsDestroyed) {
    CTree survivor;
    {
        CTree first;
        first.InitTree(CExtent(0, 0, 1, 1), 100, 20);
        first.AddToTreeNode(CExtent(0.1, 0.1, 0.2, 0.2), 1);
        first.TrimNullTreeNode();
        CTree second(first);
        second.AddToTreeNode(CExtent(0.1, 0.1, 0.2, 0.2), 2);
        EXPECT_EQ(Find(first, CExtent(0, 0, 1, 1)), (std::vector<int>{1, 2}));
        survivor = second;
        survivor = *&survivor;
    }
    EXPECT_TRUE(Find(survivor, CExtent(0, 0, 1, 1)).empty());
}

TEST(TreeLife, DestroyingTwiceIsHarmless) {
    CTree tree;
    tree.InitTree(CExtent(0, 0, 1, 1), 100, 20);
    tree.AddToTreeNode(CExtent(0.1, 0.1, 0.2, 0.2), 1);
    tree.DestroyTree();
    tree.DestroyTree();
    tree.DestroyTree(nullptr);
    EXPECT_TRUE(Find(tree, CExtent(0, 0, 1, 1)).empty());
}

}  // namespace
