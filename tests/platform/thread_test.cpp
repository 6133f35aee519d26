#include "ktl/platform/thread.h"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "ktl/platform/critical_section.h"
#include "ktl/platform/system.h"

TEST(CriticalSection, ItsThreadMayTakeItAgain) {
    CCriticalSection lock;
    lock.Lock();
    lock.Lock(0);
    std::atomic<int> entered{0};
    std::thread other([&] {
        lock.Lock();
        ++entered;
        lock.Unlock();
    });
    lock.Unlock();
    Sleep(20);
    EXPECT_EQ(entered, 0);
    lock.Unlock();
    other.join();
    EXPECT_EQ(entered, 1);
}

TEST(SingleLock, UnlocksWhatItLockedAndNothingElse) {
    CCriticalSection lock;
    {
        CSingleLock guard(&lock);
        EXPECT_FALSE(guard.IsLocked());
        EXPECT_FALSE(guard.Unlock());
        CSingleLock held(&lock, TRUE);
        EXPECT_TRUE(held.IsLocked());
        EXPECT_TRUE(held.Unlock());
    }
    std::thread other([&] {
        lock.Lock();
        lock.Unlock();
    });
    other.join();
}

TEST(Event, AnAutomaticOneLetsOnePassAndAManualOneStaysUntilReset) {
    CEvent manual(TRUE, TRUE);
    EXPECT_TRUE(manual.Lock(0) && manual.Lock(0));
    manual.ResetEvent();
    EXPECT_FALSE(manual.Lock(0));
    CEvent event;
    EXPECT_FALSE(event.Lock(0));
    event.SetEvent();
    event.SetEvent();
    EXPECT_TRUE(event.Lock(0));
    EXPECT_FALSE(event.Lock(10));
    event.PulseEvent();
    EXPECT_FALSE(event.Lock(0));
}

TEST(Event, APulseReleasesThoseThatWait) {
    for (const BOOL isManual : {FALSE, TRUE}) {
        CEvent event(FALSE, isManual);
        std::atomic<int> passed{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 3; ++i) {
            threads.emplace_back([&] {
                if (event.Lock(2000)) ++passed;
            });
        }
        Sleep(100);
        event.PulseEvent();
        Sleep(100);
        EXPECT_EQ(passed, isManual ? 3 : 1);
        for (int i = 0; i < 3; ++i) {
            event.SetEvent();
            Sleep(20);
        }
        for (std::thread &thread : threads) thread.join();
        EXPECT_EQ(passed, 3);
    }
}

namespace {

struct Worker : CWinThread {
    Worker() { m_bAutoDelete = FALSE; }
    ~Worker() override { ++destroyed; }

    BOOL InitInstance() override { return starts; }
    int Run() override {
        ran = true;
        go.Lock();
        return 7;
    }
    int ExitInstance() override { return 3; }

    BOOL starts = TRUE;
    CEvent go;
    std::atomic<bool> ran{false};
    static std::atomic<int> destroyed;
};
std::atomic<int> Worker::destroyed{0};

}  // namespace

TEST(WinThread, RunsAfterItIsResumedAndGivesItsCode) {
    Worker worker;
    EXPECT_EQ(worker.ResumeThread(), 0xFFFFFFFF);
    ASSERT_TRUE(worker.CreateThread(CREATE_SUSPENDED));
    EXPECT_FALSE(worker.CreateThread());
    EXPECT_FALSE(worker.Wait(30));
    EXPECT_FALSE(worker.ran);
    EXPECT_EQ(worker.ResumeThread(), 1U);
    EXPECT_FALSE(worker.Wait(30));
    EXPECT_EQ(worker.GetExitCode(), STILL_ACTIVE);
    EXPECT_EQ(worker.ResumeThread(), 0U);
    worker.go.SetEvent();
    EXPECT_TRUE(worker.Wait());
    EXPECT_EQ(worker.GetExitCode(), 7U);
}

TEST(WinThread, AFailedStartGoesThroughExitInstance) {
    Worker worker;
    worker.starts = FALSE;
    ASSERT_TRUE(worker.CreateThread());
    EXPECT_TRUE(worker.Wait());
    EXPECT_EQ(worker.GetExitCode(), 3U);
    EXPECT_FALSE(worker.ran);
}

TEST(WinThread, AnAutomaticOneDiesWithItsThread) {
    const int before = Worker::destroyed;
    auto *worker = new Worker;
    worker->m_bAutoDelete = TRUE;
    worker->go.SetEvent();
    ASSERT_TRUE(worker->CreateThread());
    for (int i = 0; i < 200 && Worker::destroyed == before; ++i) Sleep(10);
    EXPECT_EQ(Worker::destroyed, before + 1);
}

TEST(WinThread, OneThatNeverBeganTouchesNothing) {
    {
        Worker worker;
        ASSERT_TRUE(worker.CreateThread(CREATE_SUSPENDED));
    }
    Worker idle;
    EXPECT_TRUE(idle.Wait());
    EXPECT_EQ(idle.GetExitCode(), 0U);
}
