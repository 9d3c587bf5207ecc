// Fan-out from one hub to many connections of another process, by each send policy. The messages are framed as the
// harness's receivers want them, so they go through the hub as bytes.
#include "b_sink.hpp"

#include <Varnex/hub/MultiServer.h>

#include <thread>
#include <vector>

namespace {

struct Fanout {
    int connections;
    long size;
    long count;
};

void awaitConnections(const Varnex::MultiServer& hub, int connections) {
    while (hub.getCount() < connections) std::this_thread::yield();
}

void publish(Varnex::MultiServer& hub, const Fanout& job) {
    std::vector<char> frame(bench::kHeader + static_cast<std::size_t>(job.size), 'x');
    bench::put_header(frame.data(), 1, static_cast<std::uint32_t>(job.size), 0);
    for (long i = 0; i < job.count; ++i) {
        bench::put_seq(frame.data() + bench::kHeader, static_cast<std::uint64_t>(i));
        int n = static_cast<int>(frame.size());
        bench::check(hub.send(frame.data(), n), "send");
    }
}

void run(const char* peer, const Fanout& job, Varnex::SendPolicy::Mode mode) {
    auto sink = bench::start_sink(job.connections, job.size, job.count);
    const double cpuBefore = bench::cpu_self();
    double seconds = 0;
    {
        Varnex::MultiServer hub(1);
        hub.setTcpNoDelay(true);
        hub.setSendPolicy({.mode = mode, .whenFull = Varnex::SendPolicy::DropOldest, .maxBytes = 0, .maxMessages = 0});
        bench::check(hub.open("127.0.0.1", 0, false), "open");
        sink.link.put<std::uint16_t>(hub.getLocalPort());
        sink.link.get<char>();
        awaitConnections(hub, job.connections);
        const double start = bench::now();
        publish(hub, job);
        sink.link.get<char>();
        seconds = bench::now() - start;
        sink.link.put<char>(1);
    }
    const double cpu = bench::cpu_self() - cpuBefore;
    sink.join();
    bench::emit_fanout(peer, job.connections, job.size, job.count, seconds, cpu, cpu + sink.cpu);
}

}  // namespace

int main(int argc, char** argv) {
    const bench::Args arguments{argc, argv};
    bench::guard(240);
    const Fanout job{static_cast<int>(arguments.num("conns", 64)), arguments.num("size", 100),
                     arguments.num("count", 20000)};
    if (arguments.want("ours")) run("ours", job, Varnex::SendPolicy::Queue);
    if (arguments.want("ours-block")) run("ours-block", job, Varnex::SendPolicy::Block);
}
