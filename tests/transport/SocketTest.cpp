#include <Varnex/transport/IOException.h>
#include <Varnex/transport/InitSocket.h>
#include <Varnex/transport/Socket.h>
#include <Varnex/transport/UniqueFd.h>
#include <tests/support/CapturedDiagnostics.h>
#include <tests/support/FailingCall.h>
#include <tests/support/ThrowsText.h>

#include <csignal>

using Varnex::Chunk;
using Varnex::InitSocket;

namespace {

struct SocketPair {
    explicit SocketPair(int type) {
        int ends[2] = {-1, -1};
        EXPECT_EQ(::socketpair(AF_UNIX, type, 0, ends), 0);
        here = Varnex::UniqueFd(ends[0]);
        there = Varnex::UniqueFd(ends[1]);
    }
    Varnex::UniqueFd here, there;
};

}  // namespace

TEST(ExceptionTest, CarriesItsTextAndAnIOExceptionIsCaughtAsOne) {
    EXPECT_THROWS_TEXT(throw Varnex::Exception("x"), Varnex::Exception, "x");
    EXPECT_THROW(throw Varnex::IOException("y"), Varnex::Exception);
}

TEST(SocketTest, AnyNumberOfChunksIsOneDatagram) {
    for (const int count : {1, 5, 6, 1024, 1025}) {
        const SocketPair pair(SOCK_DGRAM);
        std::string bytes(static_cast<std::size_t>(count), ' '), got(2000, ' ');
        std::vector<Chunk> chunks;
        for (char& byte : bytes) {
            byte = static_cast<char>('a' + chunks.size() % 26);
            chunks.push_back({&byte, 1});
        }
        unsigned long sent = 0;
        EXPECT_TRUE(Varnex::Socket(pair.here.get()).sendto(chunks.data(), count, &sent, 0, nullptr, 0));
        EXPECT_EQ(sent, bytes.size());
        got.resize(static_cast<std::size_t>(::recv(pair.there.get(), got.data(), got.size(), MSG_DONTWAIT)));
        EXPECT_EQ(got, bytes);
    }
}

TEST(SocketTest, AWriteToAClosedPeerFailsInsteadOfEndingTheProcess) {
    SocketPair pair(SOCK_STREAM);
    pair.there.close();
    Varnex::Socket socket(pair.here.get());
    Chunk chunks[] = {{"x", 1}, {"y", -1}};
    unsigned long sent = 0;
    EXPECT_FALSE(socket.sendto(chunks, 1, &sent, 0, nullptr, 0));
    EXPECT_EQ(socket.lastError(), "Broken pipe");
    EXPECT_EQ(sent, static_cast<unsigned long>(-1));
    EXPECT_FALSE(socket.sendto(chunks, 2, &sent, 0, nullptr, 0));
    EXPECT_EQ(socket.lastError(), "Invalid argument");
    EXPECT_EQ(::send(pair.here.get(), "x", 1, 0), -1);
    EXPECT_EQ(errno, EPIPE);
}

TEST(InitSocketTest, FurtherUsersChangeNothingAndCleanupRestores) {
    std::signal(SIGPIPE, SIG_DFL);
    { const InitSocket another; }
    EXPECT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_DFL);
    InitSocket::startup();
    EXPECT_EQ(std::signal(SIGPIPE, SIG_IGN), SIG_IGN);
    InitSocket::cleanup();
    EXPECT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_DFL);
    InitSocket::startup();
}

TEST(InitSocketTest, FailuresAreReported) {
    const CapturedDiagnostics printed;
    {
        const FailingCall failing(Call::signal, EINVAL, {.times = 2});
        InitSocket::cleanup();
        InitSocket::startup();
    }
    InitSocket::cleanup();  // nothing was kept, so nothing is restored
    EXPECT_EQ(std::signal(SIGPIPE, SIG_IGN), SIG_IGN);
    EXPECT_EQ(printed.errors(),
              "ERROR: during signal(SIGPIPE, disp_) (Invalid argument)\n"
              "ERROR: during signal(SIGPIPE, SIG_IGN) (Invalid argument)\n");
}
