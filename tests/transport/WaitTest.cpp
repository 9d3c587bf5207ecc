#include <Varnex/transport/Wait.h>
#include <tests/support/LoopbackPair.h>

#include <chrono>

struct CountingWait : Varnex::Wait {
    int closes = 0;
    CountingWait() { EXPECT_TRUE(CountingWait::open()); }
    bool close() override { return ++closes, Wait::close(); }
};

TEST(WaitTest, TrueMeansThatTheTimeRanOutAndEachWakeUpEndsOneWait) {
    CountingWait wait;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(wait.wait(0) && wait.wait(20));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(20));
    for (int i = 0; i < 2; ++i) wait.breakWait();
    EXPECT_TRUE(!wait.wait(60000) && !wait.wait(0) && wait.wait(0));
    wait.breakWait();
    EXPECT_TRUE(wait.close() && wait.close() && wait.open() && wait.wait(0));  // closing forgets wake-ups
    std::thread waker([&] { wait.breakWait(); });
    EXPECT_FALSE(wait.wait(60000));
    waker.join();
}

TEST(WaitTest, WithoutASinkEachTextGoesToItsStandardStream) {
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    Varnex::Wait closed;
    closed.breakWait();
    EXPECT_FALSE(closed.wait(0) || CountingWait().wait(-1));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ERROR: Cannot set event\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ERROR: Cannot select\nERROR: Cannot select\n");
}

TEST(WaitTest, APipeThatCannotBeMadeOrIsFullIsReported) {
    const CapturedDiagnostics printed;
    CountingWait wait;
    for (int i = 0; i < 70000 && printed.errors().empty(); ++i) wait.breakWait();  // never blocks the waker
    EXPECT_FALSE(wait.wait(0));
    const FailingCall failing(Call::pipe2, EMFILE);
    EXPECT_FALSE(wait.open());
    EXPECT_EQ(wait.closes, 2);
    EXPECT_EQ(printed.errors(), "ERROR: Cannot set event\nERROR: While opening pipe!\n");
}
