#include "ktl/mapview/map_wnd.h"

#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <functional>
#include <future>
#include <iterator>
#include <limits>
#include <tuple>
#include <utility>

#include "ktl/overlays/shape_operate_snap.h"
#include "ktl/platform/gdiplus/gdiplus.h"
#include "ktl/shapes/shape_point.h"
#include "tests/support/drawing_start.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr UINT kHostMessage = WM_USER + 7;
constexpr auto kWgsMap = static_cast<ENUM_MAP_TYPE>(101);
constexpr Gdiplus::ARGB kBack = 0xFFF3F3FA;
constexpr Gdiplus::ARGB kDesk = 0xFFA0A0A0;
constexpr Gdiplus::ARGB kBlack = 0xFF000000;

class MapWnd : public testing::Test {
    ktl::test::DrawingStart m_drawing;
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

    using CXMapWnd::ClearBack, CXMapWnd::OnSize, CXMapWnd::m_bShowWorkArea, CXMapWnd::m_colorBack, CXMapWnd::m_csBack;
    using CXMapWnd::m_dRatio, CXMapWnd::m_extent, CXMapWnd::m_extent9, CXMapWnd::m_nFixWidth, CXMapWnd::m_nLevel;
    using CXMapWnd::m_nMapType, CXMapWnd::m_nMaxLevel, CXMapWnd::m_nMinLevel, CXMapWnd::m_nOffsetX;
    using CXMapWnd::m_nOffsetY, CXMapWnd::m_pBitmap, CXMapWnd::m_pBitmap9, CXMapWnd::m_pOverlay, CXMapWnd::m_pSnap;

    Gdiplus::ARGB Pixel(int x, int y) const { return PixelOf(*m_pBitmap, x, y); }
    Gdiplus::ARGB Pixel9(int x, int y) const { return PixelOf(*m_pBitmap9, x, y); }

    Peer peer;
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

void ExpectExtent(const CExtent &extent, const CExtent &expected) {
    EXPECT_TRUE(extent == expected) << extent.left << ' ' << extent.bottom << ' ' << extent.right << ' ' << extent.top;
}

TEST_F(MapWnd, FreshViewShowsTheWholeSquareAtRatioOne) {
    View view;
    EXPECT_EQ(view.GetRatio(), 1.0);
    ExpectExtent(view.GetCurDataExtent(), {-0.5, -0.5, 0.5, 0.5});
    ExpectExtent(view.m_extent9, {0, 0, 0, 0});
    EXPECT_EQ(view.m_nLevel, 0);
    view.ClearBack();  // no buffers yet
    EXPECT_STREQ(view.GetRuntimeClass()->m_lpszClassName, "CXMapWnd");
    EXPECT_EQ(view.GetRuntimeClass()->m_wSchema, 0xFFFFU);
    EXPECT_EQ(view.GetRuntimeClass()->CreateObject(), nullptr);
}

TEST_F(MapWnd, LevelFollowsExtentMapTypeAndLimits) {
    struct Case {
        ENUM_MAP_TYPE type;
        int fixWidth, minLevel, maxLevel;
        CExtent wish;
        int level;
        CExtent shown;
        double ratio;
    };
    constexpr ENUM_MAP_TYPE kMap{};
    const CExtent world(-180, -90, 180, 90);
    const CExtent square(-0.5, -0.25, 0.5, 0.25);
    const CExtent place(0.25, 0.25, 0.25, 0.25);
    const Case cases[] = {
        // Width decides on a tie and when it is the narrower side.
        {kMap, 256, 1, 22, {-0.5, -0.1, 0.5, 0.1}, 3, square, 1024},
        {kMap, 256, 1, 22, {-0.1, -0.2, 0.1, 0.2}, 4, {-0.25, -0.125, 0.25, 0.125}, 2048},
        {kMap, 256, 1, 22, {0, 0, 0.09375, 0.046875}, 7, {0.015625, 0.0078125, 0.078125, 0.0390625}, 16384},
        {kMap, 128, 1, 22, square, 4, square, 1024},
        {kMap, 256, 1, 10, place, 10, {0.24609375, 0.248046875, 0.25390625, 0.251953125}, 131072},
        {kMap, 256, 5, 22, square, 5, {-0.125, -0.0625, 0.125, 0.0625}, 4096},
        {kWgsMap, 256, 9, 1, world, 3, world, 1024.0 / 360},
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
        ExpectExtent(view.m_extent, c.shown);
        EXPECT_EQ(view.m_extent9.left, c.shown.left - c.shown.Width());
    }
}

TEST_F(MapWnd, FreeZoomKeepsTheWholeExtentAndEndsForEveryRatio) {
    View view(800, 400);
    view.m_nFixWidth = 0;
    view.m_nMaxLevel = 2;
    view.ZoomToExtent(CExtent(0, 0, 0.25, 0.25));
    EXPECT_EQ(view.GetRatio(), 1600.0);
    ExpectExtent(view.m_extent, {-0.125, 0, 0.375, 0.25});
    ExpectExtent(view.m_extent9, {-0.625, -0.25, 0.875, 0.5});
    EXPECT_EQ(view.m_nLevel, 3);
    view.ZoomToExtent(CExtent(0, 0, 1, 0.25));
    ExpectExtent(view.m_extent, {0, -0.125, 1, 0.375});
    // 200 pixels are exactly half the square: not yet more than it.
    view.ZoomToExtent(CExtent(-1, -0.5, 1, 0.5));
    EXPECT_EQ(view.GetRatio(), 400.0);
    EXPECT_EQ(view.m_nLevel, 1);
    // Half the square a little over 200 pixels; close; infinite, which halves down to nothing; negative; no number; 0;
    // without a width, so that the height decides.
    const std::pair<CExtent, int> cases[] = {
        {{0, 0, 1, 0.9975}, 2},
        {{0, 0, 0x1p-40, 0x1p-40}, 41},
        {{0.25, 0.25, 0.25, 0.25}, 1075},
        {{0.5, 0.5, -0.5, -0.5}, 1075},
        {{kNaN, kNaN, kNaN, kNaN}, 1},
        {{-kInfinity, -kInfinity, kInfinity, kInfinity}, 1},
        {{0, 0, 0, 0.5}, 2},
    };
    for (const auto &[wish, level] : cases) {
        view.ZoomToExtent(wish);
        EXPECT_EQ(view.m_nLevel, level) << wish.left;
    }
}

TEST_F(MapWnd, WildExtentsAndSizesDoNoHarm) {
    const CExtent wild[] = {{kNaN, 0, kNaN, 1}, {0.5, 0.5, -0.5, -0.5}, {0, 0, 0, 0}, {-1e308, -1e308, 1e308, 1e308}};
    const int sizes[][2] = {{0, 0}, {1, 1}, {3, 2000}, {-5, 10}, {100000, 100000}, {INT_MAX, 1}, {INT_MIN, 1}};
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
        EXPECT_TRUE(view.GetWindowWidth() == size[0] && view.GetWindowHeight() == size[1]);
        EXPECT_EQ(view.Getpgs() == nullptr, size[0] == 0);
    }
}

TEST_F(MapWnd, ConversionsCutTowardZero) {
    View view(400, 200);
    view.m_extent = CExtent(10, 20, 14, 22);
    view.m_dRatio = 100.0;
    const std::tuple<double, double, int, int> cases[] = {
        {10, 22, 0, 0},        {14, 20, 400, 200},       {10.019, 21.981, 1, 1},
        {9.995, 22.005, 0, 0}, {9.981, 22.0191, -1, -1}, {kNaN, kInfinity, 0, INT_MIN},
    };
    for (const auto &[x, y, cx, cy] : cases) {
        EXPECT_EQ(view.World2Client(POINTD(x, y)), CPoint(cx, cy)) << x << ' ' << y;
    }
    EXPECT_TRUE(CPointD(11, 21.5) == view.Client2World(CPoint(100, 50)));
    EXPECT_EQ(view.Client2WorldF(POINTD(0.5, 0)).x, 0.5 / 100.0 + 10);
    ExpectExtent(view.Client2World(CRect(0, 0, 200, 100)), {10, 21, 12, 22});
    EXPECT_EQ(view.Client2World(50.0), 0.5);
    EXPECT_EQ(view.World2Client(0.255), 0.255 * 100.0);

    // A place is counted from the window's height, but an extent from the shown extent's own.
    view.m_extent.top = 23;
    EXPECT_TRUE(CPointD(-50, -100) == view.World2ClientF(POINTD(9.5, 23)));
    CExtent extent(10, 20, 11, 21);
    view.World2Client(extent);
    ExpectExtent(extent, {0, 200, 100, 300});
}

TEST_F(MapWnd, GoodPointsLieInTheSquareWhateverTheMapType) {
    View view(100, 100);
    view.m_nMapType = kWgsMap;
    for (const auto &[x, y, good] : {std::tuple{0.5, -0.5, 1},
                                     {-0.5, 0.5, 1},
                                     {0.6, 0.0, 0},
                                     {0.0, -0.6, 0},
                                     {0.0, 0.6, 0},
                                     {-0.6, 0.0, 0},
                                     {kNaN, 0.0, 0}}) {
        EXPECT_EQ(view.InvalidPoint(POINTD(x, y)), good) << x << ' ' << y;
    }
    view.m_extent = CExtent(0, 0, 1, 1);
    view.m_dRatio = 100.0;
    EXPECT_EQ(view.InvalidPoint(CPoint(50, 50)), 1);
    EXPECT_EQ(view.InvalidPoint(CPoint(51, 50)), 0);
}

TEST_F(MapWnd, SizeMakesOpaqueBuffersAndZeroChangesNothing) {
    View view(40, 30);
    EXPECT_TRUE(view.m_pBitmap9->GetWidth() == 120U && view.m_pBitmap9->GetHeight() == 90U);
    EXPECT_TRUE(view.Pixel(0, 0) == kBack && view.Pixel(39, 29) == kBack);
    EXPECT_TRUE(view.Pixel9(0, 0) == kBack && view.Pixel9(119, 89) == kBack);
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
    ExpectExtent(view.m_extent, shown);
}

TEST_F(MapWnd, PageIsPaintedUpToLevel16WithThePreviousView) {
    View view(100, 100);
    view.m_extent = CExtent(-1, -1, 1, 1);
    view.m_dRatio = 50.0;
    const std::tuple<int, int, Gdiplus::ARGB> probes[] = {
        {0, 0, kDesk},     {124, 140, kDesk},  {125, 140, kBlack}, {126, 140, kBack},
        {174, 174, kBack}, {175, 130, kBlack}, {130, 125, kBlack}, {130, 175, kBlack},
        {176, 126, kDesk}, {177, 177, kBlack}, {178, 178, kDesk},  {299, 299, kDesk},
    };
    for (const auto &[show, level, hasPage] :
         {std::tuple{1, 0, true}, {1, 16, true}, {1, 17, false}, {0, 3, false}, {2, 3, false}}) {
        SCOPED_TRACE(testing::Message() << show << ' ' << level);
        view.Getpgs()->Clear(Gdiplus::Color(255, 0, 0, 255));
        view.Getpgs9()->Clear(Gdiplus::Color(255, 0, 0, 255));
        view.EMShowWorkArea(show);
        view.m_nLevel = static_cast<short>(level);
        view.ClearBack();
        EXPECT_EQ(view.Pixel(50, 50), hasPage ? kDesk : 0xFF0000FF);
        for (const auto &[x, y, color] : probes) EXPECT_EQ(view.Pixel9(x, y), hasPage ? color : kBack) << x << ' ' << y;
    }
    // A zoom paints the page where it was before.
    view.EMShowWorkArea(1);
    for (const int fixWidth : {256, 0}) {
        view.Getpgs9()->Clear(Gdiplus::Color(255, 0, 0, 255));
        view.m_extent = CExtent(-1, -1, 1, 1);
        view.m_dRatio = 50.0;
        view.m_nLevel = 3;
        view.m_nFixWidth = fixWidth;
        view.ZoomToExtent(CExtent(0.2, 0.2, 0.3, 0.3));
        EXPECT_EQ(view.Pixel9(125, 140), kBlack) << fixWidth;
    }
}

TEST_F(MapWnd, OffsetIsAbsoluteAndHeldWithinOneWindowAndFixWidthIn8To256) {
    const int cases[][5] = {
        {5000, 0, 800, 0, 1}, {-5000, 3, -800, 3, 1}, {7, -5000, 7, -600, 1}, {0, 0, 0, 0, 0}, {10, 5000, 10, 600, 1}};
    View view(800, 600);
    const CExtent shown = view.m_extent;
    for (const auto &[dx, dy, x, y, paints] : cases) {
        view.peer = Peer();
        view.Offset(dx, dy);
        EXPECT_TRUE(view.m_nOffsetX == x && view.m_nOffsetY == y) << dx << ' ' << dy;
        EXPECT_TRUE(view.peer.erasing == paints && view.peer.plain == 0) << dx << ' ' << dy;
    }
    EXPECT_TRUE(view.m_extent == shown);
    for (const auto &[given, kept] : {std::pair{-1, 8}, {8, 8}, {100, 100}, {256, 256}, {300, 256}}) {
        view.EMSetSingleMapFixWidth(given);
        EXPECT_EQ(view.m_nFixWidth, kept);
    }
}

TEST_F(MapWnd, MessagesReachTheirHandlersAndTheHostsOverlayGoesWithTheView) {
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

TEST_F(MapWnd, TheSnapMarkIsDrawnAndCleared) {
    View view(200, 100);
    view.ZoomToExtent(CExtent(-0.5, -0.25, 0.5, 0.25));
    CShape_Point corner;
    corner.SetPoint(-0.125, 0.125);
    ASSERT_EQ(view.m_pSnap->SnapTo(&corner, view.Client2World(CPoint(69, 19)), view.Client2World(5.0)), 1);
    view.EMSetSnaperColor(RGB(0, 0, 255));
    const auto draw = [&] { view.m_pSnap->Draw(view.Getpgs(), nullptr, view.GetRatio(), view.m_extent, 0, 0, 0); };
    draw();
    EXPECT_EQ(view.Pixel(62, 18), 0xFF0000FF);
    view.ClearSnapRect();
    view.Getpgs()->Clear(Gdiplus::Color(kBack));
    draw();
    EXPECT_EQ(view.Pixel(62, 18), kBack);
}

}  // namespace
