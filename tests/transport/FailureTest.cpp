#include <Varnex/transport/IOException.h>
#include <tests/support/LoopbackPair.h>

using Operation = int (*)(LoopbackPair&);

/// The result or the exception, and what was printed.
static std::string outcomeOf(Operation operation, LoopbackPair& pair) {
    const CapturedDiagnostics printed;
    try {
        const std::string result = std::to_string(operation(pair)) + " ";
        return result + printed.errors() + printed.output();
    } catch (const Varnex::IOException& e) {
        return e.what() + std::string(pair.server.isOpen() && pair.client.isOpen() ? "" : ", closed");
    }
}

TEST(FailureTest, EachSystemCallThatFailsHasItsOutcomeAndLeaksNothing) {
    static int n;
    static const Varnex::Chunk chunk{"x", 1};
    const Operation open = [](auto& pair) { return pair.server.open("127.0.0.1", 0), 0; };
    const Operation await = [](auto& pair) { return pair.server.waitForClient(0); };
    const Operation look = [](auto& pair) { return int{pair.server.isClientWaiting()}; };
    const Operation wake = [](auto& pair) { return pair.server.breakWait(), 0; };
    const Operation accept = [](auto& pair) { return pair.peer.reset(pair.server.getClient()), 0; };
    const Operation shut = [](auto& pair) { return pair.server.close(), 0; };
    const Operation dial = [](auto& pair) { return pair.client.open(pair.server.getLocalAddress()), 0; };
    const Operation send = [](auto& pair) { return pair.client.send("x", n = 1) ? 10 + n : n; };
    const Operation gather = [](auto& pair) { return pair.client.send(&chunk, 1, n = 7) ? 10 + n : n; };
    const Operation receive = [](auto& pair) { return int{received(pair.client) == "x"}; };
    const Operation wait = [](auto& pair) { return pair.client.waitForData(-1); };
    const Operation nudge = [](auto& pair) { return pair.client.breakWait(), 0; };
    const Operation close = [](auto& pair) { return pair.client.close() + 2 * pair.client.isOpen(); };
    const Operation limit = [](auto& pair) { return int{pair.client.setSendTimeout(5)}; };
    const Operation noDelay = [](auto& pair) { return pair.client.setTcpNoDelay(true), 0; };
    const std::tuple<Call, int, int, Operation, std::string> cases[] = {
        {Call::socket, EMFILE, -1, open, "Cannot open server, closed"},
        {Call::listen, EADDRINUSE, -1, open, "Cannot listen at socket (Address already in use), closed"},
        {Call::getsockname, ENOBUFS, -1, open, "Cannot get socket name (No buffer space available), closed"},
        {Call::pipe2, EMFILE, -1, await, "Cannot create pipe"},
        {Call::pipe2, EMFILE, -1, wake, "Cannot create pipe"},
        {Call::poll, ENOMEM, -1, await, "Cannot select"},
        {Call::poll, 0, 1, await, "Cannot wait"},
        {Call::poll, ENOMEM, -1, look, "Cannot select"},
        {Call::accept4, EMFILE, -1, accept, "Cannot accept client (Too many open files)"},
        {Call::accept4, EINTR, -1, accept, "0 "},
        {Call::accept4, ECONNABORTED, -1, accept, "0 "},
        {Call::accept4, EPROTO, -1, accept, "0 "},
        {Call::getsockname, ENOBUFS, -1, accept, "Cannot get socket name (No buffer space available)"},
        {Call::close, EIO, -1, shut, "Cannot close socket (Input/output error), closed"},
        {Call::socket, EMFILE, -1, dial, "Cannot open socket (Too many open files), closed"},
        {Call::connect, ENETUNREACH, -1, dial, "Cannot connect to server (Network is unreachable), closed"},
        {Call::getsockname, ENOBUFS, -1, dial, "Cannot get socket name (No buffer space available), closed"},
        {Call::send, EIO, -1, send, "0 ERROR: Cannot send (Input/output error)\n"},
        {Call::send, EINTR, -1, send, "11 "},
        {Call::send, 0, 0, send, "10 "},
        {Call::sendmsg, EIO, -1, gather, "0 "},
        {Call::sendmsg, EINTR, -1, gather, "11 "},
        {Call::sendmsg, 0, 0, gather, "0 "},
        {Call::recv, EIO, -1, receive, "0 ERROR: Cannot receive (Input/output error)\n"},
        {Call::recv, EINTR, -1, receive, "1 "},
        {Call::poll, EBADF, -1, wait, "0 ERROR: Cannot select\n"},
        {Call::poll, 0, 1, wait, "0 "},
        {Call::pipe2, EMFILE, -1, wait, "0 ERROR: Cannot create event\n"},
        {Call::pipe2, EMFILE, -1, nudge, "0 ERROR: Cannot create event\nERROR: Cannot set event\n"},
        {Call::close, EIO, -1, close, "0 ERROR: While closing (Input/output error)!\n"},
        {Call::close, EINTR, -1, close, "1 "},
        {Call::setsockopt, EPERM, -1, limit,
         "0 ERROR: NetCommunicator: cannot set connection option (Operation not permitted)\n"},
        {Call::setsockopt, EIO, -1, noDelay, "0 ERROR: NetCommunicator: cannot set tcpNoDelay\n"},
    };
    const auto before = openDescriptors();
    for (const auto& [call, error, result, operation, outcome] : cases) {
        LoopbackPair pair;
        Varnex::Client next;
        next.open("127.0.0.1", pair.server.getLocalPort());
        EXPECT_TRUE(sends(*pair.peer, "x"));
        const FailingCall failing(call, error, result);
        EXPECT_EQ(outcomeOf(operation, pair), outcome);
        pair.server.open("127.0.0.1", 0);
        pair.connect();
        pair.server.breakWait();  // a pipe that could not be made is made on the next need
        pair.client.breakWait();
        EXPECT_TRUE(pair.server.waitForClient(-1) == 0 && pair.client.waitForData(-1) == 1) << outcome;
    }
    EXPECT_EQ(openDescriptors(), before);
}
