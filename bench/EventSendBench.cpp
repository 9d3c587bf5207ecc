// One send(2) for each 100-byte event over loopback TCP: `Event::send` beside a plain loop over the same bytes. Another
// process reads and throws away.
#include <Varnex/events/EventBatch.h>
#include <Varnex/events/MessageEvent.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Server.h>

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kEventSize = 100;

/// A connection whose other end, in a process of its own, takes everything until the connection closes.
class DrainedConnection {
public:
    DrainedConnection() {
        server_.open("127.0.0.1", 0);
        child_ = ::fork();
        if (child_ == 0) drain();
        peer_.reset(server_.getClient());
        peer_->setTcpNoDelay(true);
    }
    ~DrainedConnection() {
        peer_->close();
        ::waitpid(child_, nullptr, 0);
    }
    DrainedConnection(const DrainedConnection&) = delete;
    DrainedConnection& operator=(const DrainedConnection&) = delete;

    Varnex::Client& operator*() { return *peer_; }

private:
    [[noreturn]] void drain() {
        Varnex::Client client;
        client.open("127.0.0.1", server_.getLocalPort());
        static char block[65536];
        int n;
        do n = sizeof block;
        while (client.receive(block, n) && n > 0);
        ::_exit(0);
    }

    Varnex::Server server_;
    pid_t child_ = -1;
    std::unique_ptr<Varnex::Client> peer_;
};

Varnex::MessageEvent makeEvent() {
    const std::string text(kEventSize - 16, 'x');  // 12 of the header, 2 of the code, 2 of the count
    return Varnex::MessageEvent(1, text.c_str());
}

void plainSend(benchmark::State& state) {
    DrainedConnection connection;
    auto event = makeEvent();
    Varnex::EventBatch bytes;
    bytes.add(event);
    const int fd = (*connection).getDescriptor();
    for (auto _ : state) {
        if (::send(fd, bytes.getData(), static_cast<std::size_t>(bytes.getSize()), MSG_NOSIGNAL) != kEventSize)
            state.SkipWithError("send failed");
    }
    state.SetItemsProcessed(state.iterations());
}

void eventSend(benchmark::State& state) {
    DrainedConnection connection;
    auto event = makeEvent();
    for (auto _ : state) {
        if (!event.send(&*connection)) state.SkipWithError("send failed");
    }
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK(plainSend)->UseRealTime()->MinTime(1)->Repetitions(7)->ReportAggregatesOnly();
BENCHMARK(eventSend)->UseRealTime()->MinTime(1)->Repetitions(7)->ReportAggregatesOnly();

}  // namespace

BENCHMARK_MAIN();
