#include <Varnex/transport/InitSocket.h>
#include <Varnex/transport/Socket.h>
#include <tests/support/LoopbackPair.h>

#include <csignal>

using Varnex::Chunk;
using Varnex::InitSocket;
using Varnex::UniqueFd;

TEST(SocketTest, AnyNumberOfChunksIsOneDatagramAndAClosedPeerAFailure) {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    UniqueFd here(ends[0]), there(ends[1]);
    Varnex::Socket socket(here.get());
    unsigned long sent = 0;
    for (const std::size_t count : {1U, 5U, 6U, 1024U, 1025U}) {
        std::vector<Chunk> chunks(count, Chunk{"x", 1});
        chunks.back().data = "y";
        EXPECT_TRUE(socket.sendto(chunks.data(), static_cast<int>(count), &sent, 0, nullptr, 0) && sent == count);
        char got[2000];
        const auto size = static_cast<std::size_t>(::recv(there.get(), got, sizeof got, MSG_DONTWAIT));
        EXPECT_EQ(std::string(got, size), std::string(count - 1, 'x') + "y");
    }
    there.close();
    std::signal(SIGPIPE, SIG_DFL);  // as an application may; the library's own sends do not rely on it
    Chunk chunks[] = {{"x", 1}, {"y", -1}};
    for (const int count : {1, 2}) {
        EXPECT_FALSE(socket.sendto(chunks, count, &sent, 0, nullptr, 0));
        EXPECT_EQ(socket.lastError(), count == 1 ? "Broken pipe" : "Invalid argument");
        EXPECT_EQ(sent, static_cast<unsigned long>(-1));
    }
    std::signal(SIGPIPE, SIG_IGN);
}

TEST(InitSocketTest, OnlyTheFirstUserChangesTheDispositionAndTheLastRestoresIt) {
    EXPECT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_IGN);  // since the library was loaded
    { const InitSocket another; }
    EXPECT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_DFL);
    InitSocket::startup();
    EXPECT_EQ(std::signal(SIGPIPE, SIG_IGN), SIG_IGN);
    InitSocket::cleanup();
    EXPECT_EQ(std::signal(SIGPIPE, SIG_IGN), SIG_DFL);
    const CapturedDiagnostics printed;
    const FailingCall failing(Call::signal, EINVAL, -1, 2);
    InitSocket::cleanup();
    InitSocket::startup();
    InitSocket::cleanup();  // nothing was kept, so nothing is restored
    EXPECT_EQ(std::signal(SIGPIPE, SIG_IGN), SIG_IGN);
    EXPECT_EQ(printed.errors(),
              "ERROR: during signal(SIGPIPE, disp_) (Invalid argument)\n"
              "ERROR: during signal(SIGPIPE, SIG_IGN) (Invalid argument)\n");
}
