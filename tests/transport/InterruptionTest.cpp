#include <Varnex/transport/Wait.h>
#include <tests/support/LoopbackPair.h>

#include <chrono>
#include <csignal>

#include <unistd.h>

/// Interrupts the main thread's system calls every millisecond while it lives.
struct SignalStorm {
    SignalStorm() {
        struct sigaction action {};  // without SA_RESTART
        action.sa_handler = [](int) {};
        ::sigaction(SIGALRM, &action, nullptr);
        ::ualarm(1000, 1000);
    }
    ~SignalStorm() { ::ualarm(0, 0); }
};

TEST(InterruptionTest, WaitsKeepTheirResultsAndLimits) {
    LoopbackPair pair;
    Varnex::Wait wait;
    ASSERT_TRUE(wait.open());
    const SignalStorm storm;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(wait.wait(40) && pair.client.waitForData(40) == 3 && pair.server.waitForClient(40) == 2);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(120));
}

TEST(InterruptionTest, SendsGoOnAfterPartialWrites) {
    LoopbackPair pair;
    std::string bytes(3998000, ' '), got;
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i % 251);
    std::vector<Varnex::Chunk> chunks;  // more than one call takes
    for (int i = 0, at = 0; i < 2000; at += 2 * i++) chunks.push_back({bytes.data() + at, 2 * i});
    std::thread reader([&] {
        for (std::string piece = "first"; !piece.empty(); got += piece) piece = received(*pair.peer, 1000);
    });
    {
        const SignalStorm storm;
        int sent = 0;
        EXPECT_TRUE(sends(pair.client, bytes));
        EXPECT_TRUE(pair.client.send(chunks.data(), 2000, sent) && sent == 3998000);
    }
    pair.client.close();
    reader.join();
    EXPECT_TRUE(got == bytes + bytes);
}

TEST(InterruptionTest, ASendToAPeerThatNeverReadsEndsAtItsLimit) {
    LoopbackPair pair;
    ASSERT_TRUE(pair.client.setSendTimeout(50));
    const std::string bytes(20000000, 'x');
    const Varnex::Chunk chunk{bytes.data(), 20000000};
    for (const bool signals : {false, true}) {
        const CapturedDiagnostics printed;
        const auto storm = signals ? std::make_unique<SignalStorm>() : nullptr;
        pair.connect();
        int n = 20000000;
        EXPECT_FALSE(pair.client.send(bytes.data(), n));
        EXPECT_TRUE(n > 0 && n < 20000000);
        EXPECT_FALSE(pair.client.send(&chunk, 1, n));
        EXPECT_EQ(printed.errors(), "ERROR: Cannot send (Resource temporarily unavailable)\n");
    }
}
