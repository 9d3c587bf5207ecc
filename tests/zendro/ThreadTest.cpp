#include <Varnex/transport/Exception.h>
#include <Zendro/ObjectThread.h>
#include <Zendro/Semaphore.h>
#include <Zendro/SysInfo.h>
#include <tests/support/CapturedDiagnostics.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include <sys/utsname.h>

struct Work {
    std::function<int()> function;
    int run() { return function(); }
};

TEST(ThreadTest, RunsOnceAStartAndJoinReturnsItsResult) {
    Zendro::Semaphore mayEnd(1);
    EXPECT_TRUE(mayEnd.tryDown());
    EXPECT_FALSE(mayEnd.tryDown());
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
        }
        EXPECT_TRUE(thread.start());
        mayEnd.up();
    }
    EXPECT_EQ(runs, 3);  // the destructor joins
}

TEST(ThreadTest, WhatEscapesIsPrintedAndGivesMinusOne) {
    const std::pair<std::function<int()>, const char*> cases[] = {
        {[]() -> int { throw Varnex::Exception("bad address"); }, "ERROR: bad address\n"},
        {[]() -> int { throw std::runtime_error("out of luck"); }, "ERROR: out of luck\n"},
        {[]() -> int { throw 5; }, "ERROR: A thread ended with an unknown exception\n"},
    };
    for (const auto& [function, text] : cases) {
        const CapturedDiagnostics printed;
        Work work{function};
        Zendro::ObjectThread<Work> thread(&work, &Work::run);
        EXPECT_TRUE(thread.start());
        EXPECT_EQ(thread.join(), -1);
        EXPECT_EQ(printed.errors(), text);
    }
}

TEST(SysInfoTest, SaysWhatUnameSays) {
    utsname names{};
    ASSERT_EQ(::uname(&names), 0);
    const Zendro::SysInfo& info = Zendro::SysInfo::the();
    EXPECT_EQ(info.getMachine(), names.machine);
    EXPECT_EQ(info.getSystem(), std::string(names.sysname) + " " + names.release);
    EXPECT_EQ(info.getHostName(), names.nodename);
}
