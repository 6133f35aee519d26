#include "ktl/platform/gdiplus/startup.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

#include "ktl/platform/gdiplus/gdiplus.h"

using namespace Gdiplus;

namespace {

TEST(Startup, ArgumentsAreCheckedInThePlatformsOrder) {
    struct Case {
        bool hasToken, hasInput, hasOutput;
        UINT version;
        BOOL suppress;
        Status status;
    };
    const Case cases[] = {
        {true, true, false, 1, FALSE, Ok},
        {true, true, false, 2, FALSE, Ok},
        {true, true, false, 0, FALSE, UnsupportedGdiplusVersion},
        {true, true, false, 3, FALSE, UnsupportedGdiplusVersion},
        {false, true, false, 1, FALSE, InvalidParameter},
        {true, false, false, 1, FALSE, InvalidParameter},
        {true, true, false, 1, TRUE, InvalidParameter},
        {true, true, false, 9, TRUE, InvalidParameter},
        {true, true, true, 9, TRUE, UnsupportedGdiplusVersion},
        {true, true, true, 1, TRUE, Ok},
    };
    for (const Case &c : cases) {
        GdiplusStartupInput input(nullptr, c.suppress);
        input.GdiplusVersion = c.version;
        GdiplusStartupOutput output;
        ULONG_PTR token = 0;
        const Status status = GdiplusStartup(c.hasToken ? &token : nullptr, c.hasInput ? &input : nullptr,
                                             c.hasOutput ? &output : nullptr);
        EXPECT_EQ(status, c.status) << "version " << c.version << " suppressed " << c.suppress;
        EXPECT_EQ(token != 0, status == Ok);
        EXPECT_EQ(output.NotificationHook != nullptr, c.hasOutput && c.suppress && status == Ok);
        GdiplusShutdown(token);
        EXPECT_FALSE(ktl::raster::DrawingStarted());
    }
}

TEST(Startup, OnlyTheShutdownOfTheLastTokenEndsDrawing) {
    const GdiplusStartupInput input;
    ULONG_PTR first = 0;
    ULONG_PTR second = 0;
    ASSERT_EQ(GdiplusStartup(&first, &input, nullptr), Ok);
    std::thread([&] { GdiplusStartup(&second, &input, nullptr); }).join();
    EXPECT_NE(first, second);
    GdiplusShutdown(first);
    GdiplusShutdown(first);
    GdiplusShutdown(0);
    GdiplusShutdown(second + 1000);
    EXPECT_TRUE(ktl::raster::DrawingStarted());
    GdiplusShutdown(second);
    EXPECT_FALSE(ktl::raster::DrawingStarted());
}

TEST(Startup, ObjectsMadeWithoutItSayWhy) {
    ASSERT_FALSE(ktl::raster::DrawingStarted());
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ(Bitmap(4, 4).GetLastStatus(), GdiplusNotInitialized);
        EXPECT_EQ(Bitmap(L"no-such-file").GetLastStatus(), GdiplusNotInitialized);
        EXPECT_EQ(FontFamily(L"Arial").GetLastStatus(), GdiplusNotInitialized);
        EXPECT_EQ(Font(L"Arial", 12).GetLastStatus(), GdiplusNotInitialized);
        EXPECT_EQ(StringFormat().GetLastStatus(), GdiplusNotInitialized);
        EXPECT_EQ(ImageAttributes().GetLastStatus(), GdiplusNotInitialized);
        EXPECT_EQ(Bitmap::FromFile(L"no-such-file"), nullptr);
        UINT count = 7;
        UINT size = 7;
        EXPECT_EQ(GetImageEncodersSize(&count, &size), GdiplusNotInitialized);
        EXPECT_EQ(count, 0U);
        // The answer is the same after a start that has ended.
        const GdiplusStartupInput input;
        ULONG_PTR token = 0;
        GdiplusStartup(&token, &input, nullptr);
        GdiplusShutdown(token);
    }
}

}  // namespace
