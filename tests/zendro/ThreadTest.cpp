#include <Zendro/Mutex.h>
#include <Zendro/ObjectThread.h>
#include <Zendro/Semaphore.h>
#include <Zendro/SysInfo.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>

#include <sys/utsname.h>

namespace {

struct Work {
    std::function<int()> function;
    int run() { return function(); }
};

}  // namespace

TEST(ThreadTest, RunsOnceAStartAndJoinReturnsItsResult) {
    Zendro::Semaphore mayEnd;
    int runs = 0;
    Work work{[&] { return mayEnd.down(), ++runs * 7; }};
    {
        Zendro::ObjectThread<Work> thread(&work, &Work::run);
        EXPECT_EQ(thread.join(), 0);
        for (const int result : {7, 14}) {
            EXPECT_TRUE(thread.start());
            EXPECT_FALSE(thread.start());
            mayEnd.up();
            EXPECT_EQ(thread.join(), result);
            EXPECT_EQ(thread.join(), result);
        }
        EXPECT_TRUE(thread.start());
        mayEnd.up();
    }
    EXPECT_EQ(runs, 3);  // the destructor joins
}

TEST(ThreadTest, WhatEscapesIsPrintedAndGivesMinusOne) {
    const struct {
        std::function<int()> function;
        const char* text;
    } cases[] = {
        {[]() -> int { throw std::runtime_error("out of luck"); }, "ERROR: out of luck\n"},
        {[]() -> int { throw 5; }, "ERROR: A thread ended with an unknown exception\n"},
    };
    for (const auto& c : cases) {
        Work work{c.function};
        Zendro::ObjectThread<Work> thread(&work, &Work::run);
        testing::internal::CaptureStderr();
        EXPECT_TRUE(thread.start());
        EXPECT_EQ(thread.join(), -1);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.text);
    }
}

TEST(MutexTest, LetsOneThreadInAtATime) {
    Zendro::Mutex mutex;
    int count = 0;
    Work work{[&] {
        for (int i = 0; i < 10000; ++i) {
            const Zendro::MutexLock lock(mutex);
            ++count;
        }
        return 0;
    }};
    Zendro::ObjectThread<Work> other(&work, &Work::run);
    EXPECT_TRUE(other.start());
    work.run();
    other.join();
    EXPECT_EQ(count, 20000);
}

TEST(SemaphoreTest, CountsPermits) {
    Zendro::Semaphore permits(1);
    permits.up();
    permits.down();
    EXPECT_TRUE(permits.tryDown());
    EXPECT_FALSE(permits.tryDown());
}

TEST(SysInfoTest, SaysWhatUnameSays) {
    utsname names{};
    ASSERT_EQ(::uname(&names), 0);
    const Zendro::SysInfo& info = Zendro::SysInfo::the();
    EXPECT_EQ(info.getMachine(), names.machine);
    EXPECT_EQ(info.getSystem(), std::string(names.sysname) + " " + names.release);
    EXPECT_EQ(info.getHostName(), names.nodename);
    EXPECT_EQ(&info, &Zendro::SysInfo::the());
}
