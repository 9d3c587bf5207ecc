#include <Varnex/transport/Wait.h>
#include <tests/support/CapturedDiagnostics.h>
#include <tests/support/FailingCall.h>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using Varnex::Wait;

TEST(WaitTest, TrueMeansThatTheTimeRanOut) {
    Wait wait;
    ASSERT_TRUE(wait.open());
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(wait.wait(0));
    EXPECT_TRUE(wait.wait(20));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(20));
}

TEST(WaitTest, EachWakeUpEndsOneWaitAndCloseForgetsThem) {
    Wait wait;
    ASSERT_TRUE(wait.open());
    wait.breakWait();
    wait.breakWait();
    EXPECT_FALSE(wait.wait(60000));
    EXPECT_FALSE(wait.wait(60000));
    EXPECT_TRUE(wait.wait(0));
    wait.breakWait();
    EXPECT_TRUE(wait.close() && wait.close());
    ASSERT_TRUE(wait.open());
    EXPECT_TRUE(wait.wait(0));
}

TEST(WaitTest, AnotherThreadEndsTheWait) {
    Wait wait;
    ASSERT_TRUE(wait.open());
    std::thread waker([&] { wait.breakWait(); });
    EXPECT_FALSE(wait.wait(60000));
    waker.join();
}

TEST(WaitTest, NegativeTimesAndClosedObjectsFailAloud) {
    const CapturedDiagnostics printed;
    Wait open, closed;
    ASSERT_TRUE(open.open());
    EXPECT_FALSE(open.wait(-1));
    EXPECT_FALSE(open.wait(-1000));
    EXPECT_FALSE(closed.wait(0));
    closed.breakWait();
    EXPECT_EQ(printed.output(), "ERROR: Cannot select\nERROR: Cannot select\nERROR: Cannot select\n");
    EXPECT_EQ(printed.errors(), "ERROR: Cannot set event\n");
}

TEST(WaitTest, OpenClosesFirstAndReportsAPipeThatCannotBeMade) {
    struct CountingWait : Wait {
        int closes = 0;
        bool close() override { return ++closes, Wait::close(); }
    } wait;
    ASSERT_TRUE(wait.open());
    const CapturedDiagnostics printed;
    const FailingCall failing(Call::pipe2, EMFILE);
    EXPECT_FALSE(wait.open());
    EXPECT_EQ(wait.closes, 2);
    wait.breakWait();
    EXPECT_EQ(printed.errors(), "ERROR: While opening pipe!\nERROR: Cannot set event\n");
}

TEST(WaitTest, AFullPipeRefusesTheWakeUpInsteadOfBlockingTheWaker) {
    const CapturedDiagnostics printed;
    Wait wait;
    ASSERT_TRUE(wait.open());
    for (int i = 0; i < 70000 && printed.errors().empty(); ++i) wait.breakWait();
    EXPECT_EQ(printed.errors(), "ERROR: Cannot set event\n");
    EXPECT_FALSE(wait.wait(0));
}
