#include "ktl/platform/date_time.h"

#include <cstdlib>
#include <ctime>
#include <utility>

#include <gtest/gtest.h>

#include "ktl/platform/exception.h"

namespace {

// Another zone for a while; the rules of daylight saving stand in the name.
class Zone {
  public:
    explicit Zone(const char *name) {
        ::setenv("TZ", name, 1);
        ::tzset();
    }
    ~Zone() {
        ::unsetenv("TZ");
        ::tzset();
    }
};

constexpr const char *kChina = "CST-8";

}  // namespace

TEST(Time, SixNumbersAreLocal) {
    const Zone zone(kChina);
    const CTime time(2014, 7, 8, 9, 5, 6);
    EXPECT_EQ(time.GetTime(), 1404781506);
    EXPECT_TRUE(time.GetYear() == 2014 && time.GetMonth() == 7 && time.GetHour() == 9 && time.GetDayOfWeek() == 3);
    EXPECT_EQ(time.Format("%Y-%m-%d %H:%M:%S"), "2014-07-08 09:05:06");
    EXPECT_EQ(time.FormatGmt("%H"), "01");
    // Daylight saving is chosen by the rules.
    const Zone berlin("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(CTime(2020, 7, 1, 12, 0, 0).GetTime() % 86400, 10 * 3600);
    EXPECT_EQ(CTime(2020, 1, 1, 12, 0, 0).GetTime() % 86400, 11 * 3600);
}

TEST(Time, WhatHasNoPlaceThrows) {
    const Zone zone(kChina);
    for (const auto &[year, month] : {std::pair{1969, 12}, {1970, 1}, {3001, 1}, {2000, 13}}) {
        EXPECT_THROW(CTime(year, month, 1, 0, 0, 0), CInvalidArgException) << year;
    }
    EXPECT_THROW(CTime(-100000).Format("%Y"), CInvalidArgException);
    EXPECT_EQ(CTime(2001, 2, 29, 0, 0, 0), CTime(2001, 3, 1, 0, 0, 0));
}

TEST(Time, FormatIsEnglishWhateverTheLocale) {
    const Zone zone("UTC0");
    const CTime time(1404781506);
    EXPECT_EQ(time.Format("%a %A %b %B %p %%"), "Tue Tuesday Jul July AM %");
    EXPECT_EQ(time.Format("%#m/%#d/%y %#H %Q"), CString("7/8/14 1 ") + time.Format("%Q"));
    EXPECT_EQ(time.Format("%"), "");
    EXPECT_EQ(time.Format(nullptr), "");
}

TEST(Time, SpansCount) {
    const CTimeSpan span(1, 2, 3, 4);
    EXPECT_EQ(span.GetTotalSeconds(), 93784);
    EXPECT_EQ(CTimeSpan(-93784).Format("%D %H:%M:%S"), "-1 -02:-03:-04");
    EXPECT_EQ(span.Format("%D %H:%M:%S %%"), "1 02:03:04 %");
    EXPECT_EQ(CTime(100) - CTime(40), CTimeSpan(60));
    EXPECT_EQ(CTime(100) + CTimeSpan(60), CTime(160));
    EXPECT_TRUE(CTime(1) < CTime(2));
}

TEST(Time, ClockCanBeReplaced) {
    const ktl::Clock before = ktl::SetClock([]() -> LONGLONG { return 77; });
    EXPECT_EQ(CTime::GetCurrentTime().GetTime(), 77);
    ktl::SetClock(before);
    EXPECT_GT(ktl::Now(), 1600000000);
}

TEST(Time, GmtNumbersDoNotKnowTheZone) {
    const Zone zone(kChina);
    EXPECT_EQ(ktl::SecondsFromGmt(2014, 7, 8, 1, 5, 6), 1404781506);
    EXPECT_EQ(ktl::SecondsFromGmt(1970, 1, 1, 0, 0, 0), 0);
    EXPECT_EQ(ktl::SecondsFromGmt(2001, 2, 29, 0, 0, 0), -1);
    EXPECT_EQ(ktl::SecondsFromGmt(2001, 2, 28, 24, 0, 0), -1);
}
