// What a hub costs and how fast it reacts: latency beside a stalled client, many idle connections, closing in use,
// discovery. bench/drivers/ours_b.cpp measures the throughput.
#include <Varnex/hub/MultiClient.h>
#include <Varnex/hub/MultiServer.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Diagnostics.h>
#include <tests/support/NetworkNamespace.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <thread>
#include <vector>

#include <poll.h>
#include <sys/resource.h>

namespace {

using Clock = std::chrono::steady_clock;
using Varnex::Client;
using Varnex::MultiServer;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::vector<std::unique_ptr<Client>> connectTo(MultiServer& hub, int count) {
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < count; ++i) {
        clients.push_back(std::make_unique<Client>());
        clients.back()->open("127.0.0.1", hub.getLocalPort());
    }
    while (hub.getCount() < count) std::this_thread::yield();
    return clients;
}

/// Reads time stamps from all clients but the stalled ones until they close.
class LatencySink {
public:
    LatencySink(std::vector<std::unique_ptr<Client>>& clients, std::size_t stalled)
        : clients_(clients), first_(stalled), thread_([this] { read(); }) {}

    /// After the connections were closed: all latencies in microseconds, sorted.
    std::vector<double> finish() {
        thread_.join();
        std::sort(latencies_.begin(), latencies_.end());
        return latencies_;
    }

private:
    void read() {
        std::vector<pollfd> polled;
        for (std::size_t i = first_; i < clients_.size(); ++i)
            polled.push_back({clients_[i]->getDescriptor(), POLLIN, 0});
        for (;;) {
            ::poll(polled.data(), polled.size(), -1);
            for (std::size_t i = 0; i < polled.size(); ++i)
                if (polled[i].revents != 0 && !readOne(*clients_[first_ + i])) return;
        }
    }
    bool readOne(Client& client) {
        Clock::time_point sent[64];
        int n = sizeof sent;
        if (!client.receive(sent, n) || n <= 0) return false;
        for (int i = 0; i < n / static_cast<int>(sizeof *sent); ++i)
            latencies_.push_back(std::chrono::duration<double, std::micro>(Clock::now() - sent[i]).count());
        return true;
    }

    std::vector<std::unique_ptr<Client>>& clients_;
    std::size_t first_;
    std::vector<double> latencies_;
    std::thread thread_;
};

/// Time stamps at 1,000 a second to 32 connections, of which `range(0)` never read.
void latency(benchmark::State& state) {
    const auto stalled = static_cast<std::size_t>(state.range(0));
    MultiServer hub(1);
    hub.setTcpNoDelay(true);
    hub.setSendPolicy({.mode = Varnex::SendPolicy::Queue, .maxBytes = 1 << 20});
    hub.setBacklog(1024);
    hub.open("127.0.0.1", 0, false);
    auto clients = connectTo(hub, 32);
    const auto status = hub.getStatus();
    const std::vector<char> filler(64 << 10);
    for (std::size_t i = 0; i < stalled; ++i)
        for (int part = 0; part < 256; ++part) {
            int n = static_cast<int>(filler.size());
            hub.sendTo(status[i].connection, filler.data(), n);
        }
    LatencySink sink(clients, stalled);
    auto next = Clock::now();
    for (auto _ : state) {
        std::this_thread::sleep_until(next += std::chrono::milliseconds(1));
        const auto now = Clock::now();
        int n = sizeof now;
        hub.send(&now, n);
    }
    hub.flush(stalled == 0 ? 1000 : 10);
    unsigned long long waiting = 0;
    for (const auto& each : hub.getStatus()) waiting = std::max(waiting, each.counters.waiting.bytes);
    hub.close();
    const auto all = sink.finish();
    state.counters["p50_us"] = all[all.size() / 2];
    state.counters["p99_us"] = all[all.size() * 99 / 100];
    state.counters["waiting_bytes"] = static_cast<double>(waiting);
}
BENCHMARK(latency)->Arg(0)->Arg(1)->Iterations(3000)->UseRealTime()->Unit(benchmark::kMicrosecond);

double residentKiB() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmRSS:")) return std::stod(line.substr(6));
    return 0;
}

/// 1,000 connections: memory of both ends, and how long it takes to add, reach and close them all.
void thousandConnections(benchmark::State& state) {
    constexpr int kCount = 1000;
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
    for (auto _ : state) {
        const double before = residentKiB();
        MultiServer hub(1);
        hub.setSendPolicy({.mode = state.range(0) != 0 ? Varnex::SendPolicy::Queue : Varnex::SendPolicy::Block});
        hub.setBacklog(1024);
        hub.open("127.0.0.1", 0, false);
        auto start = Clock::now();
        const auto clients = connectTo(hub, kCount);
        state.counters["open_ms"] = secondsSince(start) * 1e3;
        state.counters["KiB_each"] = (residentKiB() - before) / kCount;
        start = Clock::now();
        const char message[100] = {};
        int n = sizeof message;
        hub.send(message, n);
        hub.flush(10000);
        state.counters["broadcast_ms"] = secondsSince(start) * 1e3;
        start = Clock::now();
        hub.close();
        state.counters["close_ms"] = secondsSince(start) * 1e3;
    }
}
BENCHMARK(thousandConnections)->Arg(0)->Arg(1)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

/// Closes a hub of 200 connections while other threads broadcast and clients talk.
void closeInUse(benchmark::State& state) {
    double longest = 0;
    for (auto _ : state) {
        MultiServer hub(1);
        hub.setSendPolicy({.mode = Varnex::SendPolicy::Queue});
        hub.setBacklog(1024);
        hub.open("127.0.0.1", 0, false);
        const auto clients = connectTo(hub, 200);
        std::atomic<bool> done = false;
        std::thread sender([&] {
            for (int n = 4; !done; n = 4) hub.send("busy", n);
        });
        std::thread talker([&] {
            for (std::size_t i = 0; !done; ++i) {
                int n = 1;
                if (!clients[i % clients.size()]->send("x", n)) return;
            }
        });
        const auto start = Clock::now();
        hub.close();
        longest = std::max(longest, secondsSince(start));
        state.SetIterationTime(secondsSince(start));
        done = true;
        sender.join();
        talker.join();
    }
    state.counters["longest_ms"] = longest * 1e3;
}
BENCHMARK(closeInUse)->Iterations(1000)->UseManualTime()->Unit(benchmark::kMillisecond);

/// From the start of a client to its first connection, in a network of its own.
void discovery(benchmark::State& state) {
    static const bool ownNetwork = enterOwnNetwork();
    MultiServer server(1);
    if (!ownNetwork || !server.setDiscoveryInterface("lo") || !server.open("127.0.0.1", 0, true)) {
        state.SkipWithError("no network namespace");
        return;
    }
    for (auto _ : state) {
        Varnex::MultiClient client(1);
        client.setDiscoveryInterface("lo");
        client.open();
        while (client.getCount() == 0) std::this_thread::yield();
    }
}
BENCHMARK(discovery)->Iterations(200)->UseRealTime()->Unit(benchmark::kMicrosecond);

/// Clients that talk while their hub closes would print a line each.
const bool isQuiet = (Varnex::setDiagnosticSink([](Varnex::DiagnosticStream, std::string_view) {}), true);

}  // namespace

BENCHMARK_MAIN();
