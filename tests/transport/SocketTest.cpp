#include <Varnex/transport/InitSocket.h>
#include <Varnex/transport/Socket.h>
#include <tests/support/LoopbackPair.h>

#include <csignal>

using Varnex::Chunk;
using Varnex::InitSocket;
using Varnex::UniqueFd;

static std::pair<UniqueFd, UniqueFd> makePair(int type) {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::socketpair(AF_UNIX, type, 0, ends), 0);
    return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

TEST(SocketTest, AnyNumberOfChunksIsOneDatagram) {
    const auto [here, there] = makePair(SOCK_DGRAM);
    for (const int count : {1, 5, 6, 1024, 1025}) {
        std::vector<Chunk> chunks(static_cast<std::size_t>(count), Chunk{"x", 1});
        chunks.back().data = "y";
        unsigned long sent = 0;
        EXPECT_TRUE(Varnex::Socket(here.get()).sendto(chunks.data(), count, &sent, 0, nullptr, 0));
        EXPECT_EQ(sent, chunks.size());
        std::string got(2000, ' ');
        got.resize(static_cast<std::size_t>(::recv(there.get(), got.data(), got.size(), MSG_DONTWAIT)));
        EXPECT_EQ(got, std::string(chunks.size() - 1, 'x') + "y");
    }
}

TEST(SocketTest, AWriteToAClosedPeerFailsInsteadOfEndingTheProcess) {
    auto [here, there] = makePair(SOCK_STREAM);
    there.close();
    EXPECT_EQ(::send(here.get(), "x", 1, 0), -1);
    EXPECT_EQ(errno, EPIPE);
    std::signal(SIGPIPE, SIG_DFL);  // as an application may; the library's own sends do not rely on it
    Varnex::Socket socket(here.get());
    Chunk chunks[] = {{"x", 1}, {"y", -1}};
    for (const int count : {1, 2}) {
        unsigned long sent = 0;
        EXPECT_FALSE(socket.sendto(chunks, count, &sent, 0, nullptr, 0));
        EXPECT_EQ(socket.lastError(), count == 1 ? "Broken pipe" : "Invalid argument");
        EXPECT_EQ(sent, static_cast<unsigned long>(-1));
    }
    std::signal(SIGPIPE, SIG_IGN);
}

TEST(InitSocketTest, OnlyTheFirstUserChangesTheDispositionAndTheLastRestoresIt) {
    std::signal(SIGPIPE, SIG_DFL);
    { const InitSocket another; }
    EXPECT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_DFL);
    InitSocket::startup();
    EXPECT_EQ(std::signal(SIGPIPE, SIG_IGN), SIG_IGN);
    InitSocket::cleanup();
    EXPECT_EQ(std::signal(SIGPIPE, SIG_IGN), SIG_DFL);
    const CapturedDiagnostics printed;
    {
        const FailingCall failing(Call::signal, EINVAL, -1, 2);
        InitSocket::cleanup();
        InitSocket::startup();
    }
    InitSocket::cleanup();  // nothing was kept, so nothing is restored
    EXPECT_EQ(std::signal(SIGPIPE, SIG_IGN), SIG_IGN);
    EXPECT_EQ(printed.errors(),
              "ERROR: during signal(SIGPIPE, disp_) (Invalid argument)\n"
              "ERROR: during signal(SIGPIPE, SIG_IGN) (Invalid argument)\n");
}
