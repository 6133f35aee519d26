#include "ktl/layers/tree.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>
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
    OwnNodes(const CExtent &extent, int shapeCount, int maxPerNode) : root(tree.CreateTreeNode(extent)) {
        tree.CalcTreeDepth(shapeCount, maxPerNode);
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
    const int cases[][3] = {{20, 20, 1},   {21, 20, 2},      {100, 20, 2},     {101, 20, 3}, {1700, 20, 4},
                            {1701, 20, 5}, {5, 1, 2},        {6, 1, 3},        {5, 0, 2},    {6, -7, 3},
                            {-5, 20, 1},   {INT_MAX, 1, 17}, {INT_MAX, 20, 15}};
    for (const auto &[shapeCount, maxPerNode, depth] : cases) {
        OwnNodes nodes(CExtent(0, 0, 1, 1), shapeCount, maxPerNode);
        nodes.Add(CExtent(0, 0, 0, 0), 7);
        EXPECT_EQ(PathOf(*nodes.root, 7), std::string(static_cast<std::size_t>(depth - 1), '3'))
            << shapeCount << " by " << maxPerNode;
    }
}

TEST(TreeSplit, TakesTheWidthFromRightMinusBottom) {
    CTree tree;
    const struct {
        CExtent source, parts[4];
    } cases[] = {
        {{0, 0, 100, 100}, {{0, 45, 55, 100}, {45, 45, 100, 100}, {45, 0, 100, 45}, {0, 0, 55, 55}}},
        {{80, 20, 120, 60}, {{80, 38, 135, 60}, {125, 38, 120, 60}, {125, 20, 120, 38}, {80, 20, 135, 42}}},
    };
    for (const auto &c : cases) {
        CExtent e[4];
        tree.SplitExtent(c.source, e[0], e[1], e[2], e[3]);
        for (int i = 0; i < 4; ++i) {
            for (double EXTENT::*side : {&EXTENT::left, &EXTENT::bottom, &EXTENT::right, &EXTENT::top}) {
                EXPECT_NEAR(e[i].*side, c.parts[i].*side, 1e-12) << i;
            }
        }
    }
}

TEST(TreeTests, EdgesCountAndNotANumberMeetsAll) {
    CTree tree;
    const CExtent box(0, 0, 10, 20);
    const struct {
        CExtent other;
        int contained, meets;
    } cases[] = {{{0, 0, 10, 20}, 1, 1},    {{-1, 1, 9, 19}, 0, 1},    {{1, 1, 11, 19}, 0, 1},
                 {{1, -1, 9, 19}, 0, 1},    {{1, 1, 9, 21}, 0, 1},     {{10, 20, 12, 22}, 0, 1},
                 {{-5, -5, 0, 0}, 0, 1},    {{10.5, 0, 12, 20}, 0, 0}, {{0, 20.5, 10, 22}, 0, 0},
                 {{0, -3, 10, -0.5}, 0, 0}, {{-3, 0, -0.5, 20}, 0, 0}, {{kNaN, kNaN, kNaN, kNaN}, 0, 1}};
    for (const auto &c : cases) {
        EXPECT_EQ(tree.CheckObjectContained(c.other, box), c.contained) << c.other.left << ' ' << c.other.bottom;
        EXPECT_EQ(tree.Intersect(c.other, box), c.meets) << c.other.left << ' ' << c.other.bottom;
        EXPECT_EQ(tree.Intersect(box, c.other), c.meets) << c.other.left << ' ' << c.other.bottom;
    }
}

// The first fits in all of e0, e1 and e3, the next are e0 and e1 themselves; e2 ends at 45 and e3 at 55.
TEST(TreeInsertion, FirstChildThatContainsWins) {
    const struct {
        CExtent object;
        const char *path;
    } cases[] = {{{50, 50, 51, 51}, "0"}, {{0, 45, 55, 100}, "0"}, {{45, 45, 100, 100}, "1"},
                 {{50, 20, 52, 45}, "2"}, {{50, 20, 52, 46}, "3"}, {{0, 0, 100, 100}, ""},
                 {{40, 40, 60, 60}, ""},  {{-5, 1, 1, 2}, ""},     {{kNaN, 1, 2, 3}, ""}};
    for (const auto &c : cases) {
        OwnNodes nodes(CExtent(0, 0, 100, 100), 21, 20);
        nodes.Add(c.object, 1);
        EXPECT_EQ(PathOf(*nodes.root, 1), c.path) << c.object.left << ' ' << c.object.bottom;
    }
}

TEST(TreeInsertion, LastLevelGetsChildrenTooAndTrimmingTakesThem) {
    OwnNodes nodes(CExtent(0, 0, 100, 100), 21, 20);
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

// The objects lie at 30, the root, 0, 33, 00 and 1.
TEST(TreeQuery, GoesLevelByLevelAndAppends) {
    CTree tree;
    tree.InitTree(CExtent(0, 0, 100, 100), 101, 20);
    const CExtent objects[] = {{1, 40, 20, 54}, {40, 40, 60, 60}, {2, 50, 40, 60},
                               {1, 1, 2, 2},    {1, 98, 2, 99},   {60, 50, 99, 60}};
    for (int i = 0; i < 6; ++i) tree.AddToTreeNode(objects[i], i);
    tree.AddToTreeNode(CExtent(500, 500, 510, 510), 6);
    const struct {
        CExtent window;
        std::vector<int> ids;
    } cases[] = {
        {{0, 0, 100, 100}, {1, 6, 2, 5, 4, 0, 3}},
        {{1, 1, 1, 1}, {1, 6, 3}},
        {{99, 45, 99, 45}, {1, 6, 5}},  // touches an edge
        {{99, 44.9, 99, 44.9}, {1, 6}},
        {{500, 500, 510, 510}, {}},  // an object is there, but the root is not
        {{kNaN, kNaN, kNaN, kNaN}, {1, 6, 2, 5, 4, 0, 3}},
    };
    for (const bool trimmed : {false, true}) {
        if (trimmed) tree.TrimNullTreeNode();
        CArray<int, int> all;
        std::vector<int> wanted;
        for (const auto &c : cases) {
            tree.FindShapeID(c.window, all);
            wanted.insert(wanted.end(), c.ids.begin(), c.ids.end());
            EXPECT_EQ(ToVector(all), wanted) << trimmed << ' ' << c.window.left << ' ' << c.window.bottom;
        }
    }
}

// Laid out flat, the tree gives what the walk over its nodes gives, in the same order.
TEST(TreeQuery, TrimmingChangesNoAnswer) {
    const CExtent roots[] = {
        {0, 0, 1, 1}, {-180, -90, 180, 90},          {30, 2, 40, 2.5}, {-40, 100, 60, 300}, {-2, 5, -1, 6},
        {3, 3, 3, 3}, {-1e300, -1e300, 1e300, 1e300}};
    for (unsigned seed = 0; seed < std::size(roots) * 2; ++seed) {
        const CExtent &root = roots[seed / 2];
        const int count = seed % 2 ? 6000 : 150;
        SCOPED_TRACE("seed " + std::to_string(seed));
        Sampler sampler(seed);
        CTree tree;
        tree.InitTree(root, count, seed % 2 ? 1 : 20);
        for (int i = 0; i < count; ++i) {
            CExtent object = sampler.Rect(root, i % 10 == 0 ? 0.6 : 0.02);
            if (i % 50 == 7) object.Offset(root.right - root.left, 0);
            tree.AddToTreeNode(object, i);
        }
        // The whole, an edge, a corner, everything, nothing; inside out; touching the edge of a child.
        const double edge = root.bottom + 0.45 * root.Height();
        std::vector<CExtent> windows = {root,
                                        {root.right, root.bottom, root.right + 1, root.top},
                                        {root.left, root.top, root.left, root.top},
                                        {-kInfinity, -kInfinity, kInfinity, kInfinity},
                                        {root.right + 1, root.top + 1, root.right + 2, root.top + 2},
                                        {root.right, root.top, root.left, root.bottom},
                                        {root.left, edge, root.right, edge}};
        for (int i = 0; i < 60; ++i) windows.push_back(sampler.Rect(root, i % 3 ? 0.05 : 0.9));
        std::vector<std::vector<int>> wanted;
        for (const CExtent &window : windows) wanted.push_back(Find(tree, window));
        EXPECT_EQ(wanted[3].size(), static_cast<std::size_t>(count));
        tree.TrimNullTreeNode();
        for (std::size_t i = 0; i < windows.size(); ++i) ASSERT_EQ(Find(tree, windows[i]), wanted[i]) << i;

        // An insertion into a trimmed tree is found as well, before and after the next trimming.
        tree.AddToTreeNode(sampler.Rect(root, 0.01), count);
        const std::vector<int> before = Find(tree, root);
        EXPECT_EQ(before.size(), static_cast<std::size_t>(count) + 1);
        tree.TrimNullTreeNode();
        EXPECT_EQ(Find(tree, root), before);
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
    for (int i = 0; i < 2; ++i) tree.DestroyTree();
    tree.DestroyTree(nullptr);
    EXPECT_TRUE(Find(tree, CExtent(0, 0, 1, 1)).empty());
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

}  // namespace
