#include "ktl/mapview/map_wnd.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <functional>
#include <future>
#include <iterator>
#include <limits>
#include <utility>

#include "ktl/legends/legend_polygon.h"
#include "ktl/overlays/shape_operate_cursor.h"
#include "ktl/overlays/shape_operate_snap.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/shapes/shape_polygon.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr UINT kHostMessage = WM_USER + 7;
constexpr auto kWgsMap = static_cast<ENUM_MAP_TYPE>(101);
constexpr Gdiplus::ARGB kBack = 0xFFF3F3FA;
constexpr Gdiplus::ARGB kDesk = 0xFFA0A0A0;
constexpr Gdiplus::ARGB kBlack = 0xFF000000;

class MapWnd : public testing::Test {
  protected:
    void SetUp() override {
        const Gdiplus::GdiplusStartupInput input;
        ASSERT_EQ(Gdiplus::GdiplusStartup(&m_token, &input, nullptr), Gdiplus::Ok);
    }
    void TearDown() override { Gdiplus::GdiplusShutdown(m_token); }

  private:
    ULONG_PTR m_token = 0;
};

/// A window off screen: counts what it is asked for.
struct Peer : ktl::WindowPeer {
    void Invalidate(CWnd &, bool erase) override { ++(erase ? erasing : plain); }
    int erasing = 0;
    int plain = 0;
};

/// A host's view. It opens the protected state to the tests, as a host's subclass may.
class View : public CXMapWnd {
  public:
    explicit View(int width = 0, int height = 0) {
        SetPeer(&peer);
        m_nMapType = static_cast<ENUM_MAP_TYPE>(0);
        if (width != 0) MoveWindow(0, 0, width, height);
    }

    using CXMapWnd::ClearBack;
    using CXMapWnd::m_bShowWorkArea;
    using CXMapWnd::m_colorBack;
    using CXMapWnd::m_csBack;
    using CXMapWnd::m_dRatio;
    using CXMapWnd::m_extent;
    using CXMapWnd::m_extent9;
    using CXMapWnd::m_nFixWidth;
    using CXMapWnd::m_nLevel;
    using CXMapWnd::m_nMapType;
    using CXMapWnd::m_nMaxLevel;
    using CXMapWnd::m_nMinLevel;
    using CXMapWnd::m_nOffsetX;
    using CXMapWnd::m_nOffsetY;
    using CXMapWnd::m_pBitmap;
    using CXMapWnd::m_pBitmap9;
    using CXMapWnd::m_pCursor;
    using CXMapWnd::m_pOverlay;
    using CXMapWnd::m_pSnap;
    using CXMapWnd::OnSize;

    void DrawLayers() override {
        square.Draw(Getpgs(), &legend, GetRatio(), GetCurDataExtent(), 0, 0, 0);
        m_pSnap->Draw(Getpgs(), nullptr, GetRatio(), GetCurDataExtent(), 0, 0, 0);
    }

    Gdiplus::ARGB Pixel(int x, int y) const { return PixelOf(*m_pBitmap, x, y); }
    Gdiplus::ARGB Pixel9(int x, int y) const { return PixelOf(*m_pBitmap9, x, y); }

    Peer peer;
    CShape_Polygon square;
    CLegend_Polygon legend;
    int paints = 0;

  protected:
    const AFX_MSGMAP *GetMessageMap() const override {
        static const AFX_MSGMAP_ENTRY entries[] = {
            ktl::OnPaintEntry<View, &View::OnPaint>(),
            ktl::OnMessageEntry<CXMapWnd, &CXMapWnd::MsgSetModified>(kHostMessage),
        };
        static const AFX_MSGMAP map = {CXMapWnd::GetThisMessageMap(), entries, std::size(entries)};
        return &map;
    }
    void OnPaint() { ++paints; }

  private:
    static Gdiplus::ARGB PixelOf(const Gdiplus::Bitmap &bitmap, int x, int y) {
        Gdiplus::Color color(0);
        EXPECT_EQ(bitmap.GetPixel(x, y, &color), Gdiplus::Ok) << x << ' ' << y;
        return color.GetValue();
    }
};

void ExpectExtent(const CExtent &extent, double left, double bottom, double right, double top) {
    EXPECT_EQ(extent.left, left);
    EXPECT_EQ(extent.bottom, bottom);
    EXPECT_EQ(extent.right, right);
    EXPECT_EQ(extent.top, top);
}

TEST_F(MapWnd, FreshViewShowsTheWholeSquareAtRatioOne) {
    View view;
    EXPECT_EQ(view.GetRatio(), 1.0);
    ExpectExtent(view.GetCurDataExtent(), -0.5, -0.5, 0.5, 0.5);
    ExpectExtent(view.m_extent9, 0, 0, 0, 0);
    EXPECT_EQ(view.m_nLevel, 0);
    EXPECT_EQ(view.GetWindowRect(), CRect(0, 0, 0, 0));
    EXPECT_EQ(view.Getpgs(), nullptr);
    view.ClearBack();  // no buffers yet
    EXPECT_STREQ(view.GetRuntimeClass()->m_lpszClassName, "CXMapWnd");
    EXPECT_EQ(view.GetRuntimeClass()->m_wSchema, 0xFFFFU);
    EXPECT_EQ(view.GetRuntimeClass()->CreateObject(), nullptr);
}

TEST_F(MapWnd, ZoomSnapsInwardToTheBit) {
    View view(1024, 768);
    view.ZoomToExtent(CExtent(-0.5, -0.5, 0.5, 0.5));
    EXPECT_EQ(view.m_nLevel, 3);
    EXPECT_EQ(view.GetRatio(), 1024.0);
    ExpectExtent(view.GetCurDataExtent(), -0.5, -0.375, 0.5, 0.375);
    ExpectExtent(view.m_extent9, -1.5, -1.125, 1.5, 1.125);
}

TEST_F(MapWnd, LevelFollowsExtentMapTypeAndLimits) {
    const struct {
        ENUM_MAP_TYPE type;
        int fixWidth, minLevel, maxLevel;
        CExtent wish;
        int level;
        CExtent shown;
        double ratio;
    } cases[] = {
        // Width decides on a tie and when it is the narrower side.
        {ENUM_MAP_TYPE{}, 256, 1, 22, {-0.5, -0.1, 0.5, 0.1}, 3, {-0.5, -0.25, 0.5, 0.25}, 1024},
        {ENUM_MAP_TYPE{},
         256,
         1,
         22,
         {0.25, 0.25, 0.34375, 0.296875},
         7,
         {0.265625, 0.2578125, 0.328125, 0.2890625},
         16384},
        {ENUM_MAP_TYPE{}, 128, 1, 22, {-0.5, -0.25, 0.5, 0.25}, 4, {-0.5, -0.25, 0.5, 0.25}, 1024},
        {ENUM_MAP_TYPE{},
         256,
         1,
         10,
         {0.125, 0.125, 0.125, 0.125},
         10,
         {0.12109375, 0.123046875, 0.12890625, 0.126953125},
         131072},
        {ENUM_MAP_TYPE{}, 256, 5, 22, {-0.5, -0.25, 0.5, 0.25}, 5, {-0.125, -0.0625, 0.125, 0.0625}, 4096},
        {ENUM_MAP_TYPE{},
         256,
         1,
         22,
         {0.25, 0.25, 0.25, 0.25},
         22,
         {0.25 - 0x1p-20, 0.25 - 0x1p-21, 0.25 + 0x1p-20, 0.25 + 0x1p-21},
         0x1p29},
        {kWgsMap, 256, 1, 22, {-180, -90, 180, 90}, 3, {-180, -90, 180, 90}, 1024.0 / 360},
        {kWgsMap, 256, 9, 1, {-180, -90, 180, 90}, 3, {-180, -90, 180, 90}, 1024.0 / 360},
    };
    for (const auto &c : cases) {
        View view(1024, 512);
        view.m_nMapType = c.type;
        view.m_nFixWidth = c.fixWidth;
        view.m_nMinLevel = static_cast<short>(c.minLevel);
        view.m_nMaxLevel = static_cast<short>(c.maxLevel);
        view.ZoomToExtent(c.wish);
        SCOPED_TRACE(testing::Message() << c.wish.left << ' ' << c.fixWidth << ' ' << c.maxLevel);
        EXPECT_EQ(view.m_nLevel, c.level);
        EXPECT_DOUBLE_EQ(view.GetRatio(), c.ratio);
        EXPECT_DOUBLE_EQ(view.m_extent.left, c.shown.left);
        EXPECT_DOUBLE_EQ(view.m_extent.bottom, c.shown.bottom);
        EXPECT_DOUBLE_EQ(view.m_extent.right, c.shown.right);
        EXPECT_DOUBLE_EQ(view.m_extent.top, c.shown.top);
    }
}

TEST_F(MapWnd, FreeZoomKeepsTheWholeExtent) {
    View view(800, 400);
    view.m_nFixWidth = 0;
    view.m_nMaxLevel = 2;
    view.ZoomToExtent(CExtent(0, 0, 0.25, 0.25));
    EXPECT_EQ(view.GetRatio(), 1600.0);
    ExpectExtent(view.m_extent, -0.125, 0, 0.375, 0.25);
    ExpectExtent(view.m_extent9, -0.625, -0.25, 0.875, 0.5);
    EXPECT_EQ(view.m_nLevel, 3);

    // 200 pixels are exactly half the square: not yet more than it.
    view.ZoomToExtent(CExtent(-1, -0.5, 1, 0.5));
    EXPECT_EQ(view.GetRatio(), 400.0);
    EXPECT_EQ(view.m_nLevel, 1);
    view.ZoomToExtent(CExtent(0, 0, 0x1p-40, 0x1p-40));
    EXPECT_EQ(view.m_nLevel, 41);
}

TEST_F(MapWnd, FreeZoomEndsForEveryRatio) {
    const struct {
        CExtent wish;
        int level;
    } cases[] = {
        {{0.25, 0.25, 0.25, 0.25}, 1075},  // infinite: halves down to nothing
        {{0.5, 0.5, -0.5, -0.5}, 1075},    // negative
        {{kNaN, kNaN, kNaN, kNaN}, 1},
        {{-kInfinity, -kInfinity, kInfinity, kInfinity}, 1},
        {{0, 0, 0, 0.5}, 2},  // no width: the height decides
    };
    for (const auto &c : cases) {
        View view(800, 400);
        view.m_nFixWidth = 0;
        view.ZoomToExtent(c.wish);
        EXPECT_EQ(view.m_nLevel, c.level) << c.wish.left;
    }
}

TEST_F(MapWnd, WildExtentsAndSizesDoNoHarm) {
    const CExtent wild[] = {{kNaN, 0, kNaN, 1},
                            {-kInfinity, -kInfinity, kInfinity, kInfinity},
                            {0.5, 0.5, -0.5, -0.5},
                            {0, 0, 0, 0},
                            {-1e308, -1e308, 1e308, 1e308},
                            {0, 0, 1e-320, 1e-320}};
    const int sizes[][2] = {{0, 0},
                            {1, 1},
                            {3, 2000},
                            {-5, 10},
                            {10, -5},
                            {100000, 100000},
                            {std::numeric_limits<int>::max(), 1},
                            {std::numeric_limits<int>::min(), 1}};
    for (const auto &size : sizes) {
        View view;
        view.MoveWindow(0, 0, size[0], size[1]);
        view.OnSize(SIZE_RESTORED, size[0], size[1]);
        view.m_bShowWorkArea = 1;
        for (const CExtent &extent : wild) {
            for (int fixWidth : {256, 0}) {
                view.m_nFixWidth = fixWidth;
                view.ZoomToExtent(extent);
                view.ClearBack();
                view.World2Client(POINTD(0.1, 0.1));
                view.Client2World(CRect(0, 0, size[0], size[1]));
                view.Offset(5, -5);
            }
        }
        EXPECT_EQ(view.GetWindowWidth(), size[0]);
        EXPECT_EQ(view.GetWindowHeight(), size[1]);
        EXPECT_EQ(view.Getpgs() == nullptr, size[0] == 0);
    }
}

TEST_F(MapWnd, ConversionsCutTowardZero) {
    View view(400, 200);
    view.m_extent = CExtent(10, 20, 14, 22);
    view.m_dRatio = 100.0;
    const struct {
        double wx, wy;
        int cx, cy;
    } cases[] = {{10, 22, 0, 0},           {14, 20, 400, 200},
                 {10.019, 21.981, 1, 1},   {9.995, 22.005, 0, 0},
                 {9.981, 22.0191, -1, -1}, {kNaN, kInfinity, 0, std::numeric_limits<int>::min()}};
    for (const auto &c : cases) {
        EXPECT_EQ(view.World2Client(POINTD(c.wx, c.wy)), CPoint(c.cx, c.cy)) << c.wx << ' ' << c.wy;
    }
    const POINTD exact = view.World2ClientF(POINTD(9.5, 23));
    EXPECT_EQ(exact.x, -50.0);
    EXPECT_EQ(exact.y, -100.0);
    const POINTD world = view.Client2World(CPoint(100, 50));
    EXPECT_EQ(world.x, 11.0);
    EXPECT_EQ(world.y, 21.5);
    EXPECT_EQ(view.Client2WorldF(POINTD(0.5, 0)).x, 0.5 / 100.0 + 10);
    ExpectExtent(view.Client2World(CRect(0, 0, 200, 100)), 10, 21, 12, 22);
    EXPECT_EQ(view.Client2World(50.0), 0.5);
    EXPECT_EQ(view.World2Client(0.255), 0.255 * 100.0);

    // The extent's own height counts here, not the window's.
    view.m_extent.top = 23;
    CExtent extent(10, 20, 11, 21);
    view.World2Client(extent);
    ExpectExtent(extent, 0, 200, 100, 300);
}

TEST_F(MapWnd, GoodPointsLieInTheSquareWhateverTheMapType) {
    View view(100, 100);
    view.m_nMapType = kWgsMap;
    const struct {
        double x, y;
        int good;
    } cases[] = {{0.5, -0.5, 1}, {-0.5, 0.5, 1}, {0.6, 0, 0}, {0, -0.6, 0}, {0, 0.6, 0}, {-0.6, 0, 0}, {kNaN, 0, 0}};
    for (const auto &c : cases) EXPECT_EQ(view.InvalidPoint(POINTD(c.x, c.y)), c.good) << c.x << ' ' << c.y;
    view.m_extent = CExtent(0, 0, 1, 1);
    view.m_dRatio = 100.0;
    EXPECT_EQ(view.InvalidPoint(CPoint(50, 50)), 1);
    EXPECT_EQ(view.InvalidPoint(CPoint(51, 50)), 0);
}

TEST_F(MapWnd, SizeMakesOpaqueBuffersAndZeroChangesNothing) {
    View view(40, 30);
    EXPECT_EQ(view.GetWindowRect(), CRect(0, 0, 40, 30));
    EXPECT_EQ(view.m_pBitmap9->GetWidth(), 120U);
    EXPECT_EQ(view.m_pBitmap9->GetHeight(), 90U);
    for (const auto &[x, y] : {std::pair{0, 0}, std::pair{39, 29}}) EXPECT_EQ(view.Pixel(x, y), kBack);
    for (const auto &[x, y] : {std::pair{0, 0}, std::pair{119, 89}, std::pair{60, 45}}) {
        EXPECT_EQ(view.Pixel9(x, y), kBack);
    }
    view.ZoomToExtent(CExtent(0, 0, 0.1, 0.1));
    const CExtent shown = view.m_extent;
    const Gdiplus::Bitmap *before = view.m_pBitmap;
    view.MoveWindow(0, 0, 50, 0);
    view.SendMessage(WM_SIZE, SIZE_MINIMIZED, MAKELPARAM(0, 0));
    EXPECT_EQ(view.GetWindowRect(), CRect(0, 0, 40, 30));
    EXPECT_EQ(view.m_pBitmap, before);

    view.m_colorBack = RGB(1, 2, 3);
    view.MoveWindow(0, 0, 20, 10);
    EXPECT_EQ(view.m_pBitmap->GetWidth(), 20U);
    EXPECT_EQ(view.Pixel(19, 9), 0xFF010203U);
    ExpectExtent(view.m_extent, shown.left, shown.bottom, shown.right, shown.top);
}

TEST_F(MapWnd, PageIsPaintedUpToLevel16WithThePreviousView) {
    View view(100, 100);
    view.m_extent = CExtent(-1, -1, 1, 1);
    view.m_dRatio = 50.0;
    const struct {
        int show, level;
        bool page;
    } cases[] = {{1, 0, true}, {1, 16, true}, {1, 17, false}, {0, 3, false}, {2, 3, false}};
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.show << ' ' << c.level);
        view.Getpgs()->Clear(Gdiplus::Color(255, 0, 0, 255));
        view.Getpgs9()->Clear(Gdiplus::Color(255, 0, 0, 255));
        view.EMShowWorkArea(c.show);
        view.m_nLevel = static_cast<short>(c.level);
        view.ClearBack();
        EXPECT_EQ(view.Pixel(50, 50), c.page ? kDesk : 0xFF0000FF);
        const struct {
            int x, y;
            Gdiplus::ARGB color;
        } probes[] = {{0, 0, kDesk},     {124, 140, kDesk},  {125, 140, kBlack}, {126, 140, kBack},
                      {174, 174, kBack}, {175, 130, kBlack}, {130, 125, kBlack}, {130, 175, kBlack},
                      {176, 126, kDesk}, {177, 177, kBlack}, {178, 178, kDesk},  {299, 299, kDesk}};
        for (const auto &p : probes) EXPECT_EQ(view.Pixel9(p.x, p.y), c.page ? p.color : kBack) << p.x << ' ' << p.y;
    }
    // A zoom paints the page where it was before.
    view.EMShowWorkArea(1);
    view.m_nLevel = 3;
    view.ZoomToExtent(CExtent(0.2, 0.2, 0.3, 0.3));
    EXPECT_EQ(view.Pixel9(125, 140), kBlack);
}

TEST_F(MapWnd, OffsetIsAbsoluteAndHeldWithinOneWindow) {
    const struct {
        int dx, dy, x, y, paints;
    } cases[] = {
        {5000, 0, 800, 0, 1}, {-5000, 3, -800, 3, 1}, {7, -5000, 7, -600, 1}, {0, 0, 0, 0, 0}, {10, 5000, 10, 600, 1}};
    View view(800, 600);
    const CExtent shown = view.m_extent;
    for (const auto &c : cases) {
        view.peer = Peer();
        view.Offset(c.dx, c.dy);
        EXPECT_EQ(view.m_nOffsetX, c.x);
        EXPECT_EQ(view.m_nOffsetY, c.y);
        EXPECT_EQ(view.peer.erasing, c.paints) << c.dx << ' ' << c.dy;
        EXPECT_EQ(view.peer.plain, 0);
    }
    EXPECT_TRUE(view.m_extent == shown);
}

TEST_F(MapWnd, FixWidthIsHeldIn8To256) {
    View view;
    for (const auto &[given, kept] : {std::pair{4, 8}, {-1, 8}, {8, 8}, {100, 100}, {256, 256}, {300, 256}}) {
        view.EMSetSingleMapFixWidth(given);
        EXPECT_EQ(view.m_nFixWidth, kept);
    }
}

TEST_F(MapWnd, MessagesReachTheirHandlers) {
    View view(10, 10);
    EXPECT_EQ(view.SendMessage(WM_ERASEBKGND), 1);
    view.SendMessage(WM_PAINT);
    EXPECT_EQ(view.paints, 1);
    EXPECT_EQ(view.GetModifyFlag(), 0);
    EXPECT_EQ(view.SendMessage(kHostMessage), 0);
    EXPECT_EQ(view.GetModifyFlag(), 1);
}

TEST_F(MapWnd, BuffersAreLeftAloneWhileAnotherThreadHoldsTheLock) {
    using std::chrono::milliseconds;
    View view(20, 20);
    const std::function<void()> works[] = {[&] { view.OnSize(SIZE_RESTORED, 30, 30); }, [&] { view.ClearBack(); }};
    for (const auto &work : works) {
        view.m_csBack.Lock();
        auto done = std::async(std::launch::async, work);
        EXPECT_EQ(done.wait_for(milliseconds(50)), std::future_status::timeout);
        view.m_csBack.Unlock();
        EXPECT_EQ(done.wait_for(milliseconds(5000)), std::future_status::ready);
    }
    EXPECT_EQ(view.GetWindowWidth(), 30);
}

TEST_F(MapWnd, OverlayOfTheHostGoesWithTheView) {
    struct Overlay : CObject {
        explicit Overlay(bool *flag) : gone(flag) {}
        ~Overlay() override { *gone = true; }
        bool *gone;
    };
    bool gone = false;
    {
        View view(10, 10);
        view.m_pOverlay = new Overlay(&gone);
    }
    EXPECT_TRUE(gone);
}

TEST_F(MapWnd, HostDrawsOffScreen) {
    View view(200, 100);
    view.ZoomToExtent(CExtent(-0.5, -0.25, 0.5, 0.25));
    ASSERT_EQ(view.GetRatio(), 256.0);
    for (const auto &[x, y] :
         {std::pair{-0.125, -0.125}, {0.125, -0.125}, {0.125, 0.125}, {-0.125, 0.125}, {-0.125, -0.125}}) {
        view.square.AddPoint(POINTD(x, y));
    }
    view.DrawLayers();
    // The world's middle is pixel (100, 50); the square spans 32 pixels each way.
    const Gdiplus::ARGB inside = view.Pixel(100, 50);
    EXPECT_NE(inside, kBack);
    EXPECT_EQ(view.Pixel(70, 20), inside);
    EXPECT_EQ(view.Pixel(64, 50), kBack);
    EXPECT_EQ(view.Pixel(136, 50), kBack);
    EXPECT_EQ(view.Pixel(100, 14), kBack);

    ASSERT_EQ(view.m_pSnap->SnapTo(&view.square, view.Client2World(CPoint(69, 19)), view.Client2World(5.0)), 1);
    view.EMSetSnaperColor(RGB(0, 0, 255));
    view.DrawLayers();
    EXPECT_EQ(view.Pixel(62, 18), 0xFF0000FF);
    view.ClearSnapRect();
    view.Getpgs()->Clear(Gdiplus::Color(kBack));
    view.DrawLayers();
    EXPECT_EQ(view.Pixel(62, 18), kBack);
}

}  // namespace
