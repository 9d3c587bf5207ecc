#include <Varnex/transport/Exception.h>
#include <Zendro/ObjectThread.h>
#include <Zendro/Semaphore.h>
#include <tests/support/CapturedDiagnostics.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

struct Work {
    std::function<int()> function;
    int run() { return function(); }
};

TEST(ThreadTest, RunsOnceAStartAndJoinReturnsItsResult) {
    Zendro::Semaphore mayEnd(1);
    EXPECT_TRUE(mayEnd.tryDown() && !mayEnd.tryDown());
    int runs = 0;
    Work work{[&] { return mayEnd.down(), ++runs * 7; }};
    {
        Zendro::ObjectThread<Work> thread(&work, &Work::run);
        for (const int result : {0, 7, 14}) {
            EXPECT_EQ(thread.join(), result);
            EXPECT_TRUE(thread.start() && !thread.start());
            mayEnd.up();
        }
    }
    EXPECT_EQ(runs, 3);  // the destructor joins
}

TEST(ThreadTest, WhatEscapesIsPrintedAndGivesMinusOne) {
    const CapturedDiagnostics printed;
    const auto address = []() -> int { throw Varnex::Exception("bad address"); };
    const auto luck = []() -> int { throw std::runtime_error("out of luck"); };
    for (Work work : {Work{address}, Work{luck}, Work{[]() -> int { throw 5; }}}) {
        Zendro::ObjectThread<Work> thread(&work, &Work::run);
        EXPECT_TRUE(thread.start() && thread.join() == -1);
    }
    EXPECT_EQ(printed.errors(), "ERROR: bad address\nERROR: out of luck\nERROR: Unknown exception\n");
}
