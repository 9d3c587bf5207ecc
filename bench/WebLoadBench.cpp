// What a web server costs and bears, for each kind: memory of an idle connection, time to close with many of them, and
// how soon honest clients are answered while attackers trickle requests.

#include <Varnex/transport/Client.h>
#include <Varnex/transport/Diagnostics.h>
#include <Varnex/web/PolledWebServer.h>
#include <Varnex/web/ThreadedWebServer.h>
#include <Varnex/web/WebPageStatic.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include <sys/socket.h>

using namespace Varnex;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int kIdle = 256;
constexpr int kChurn = 10000;
constexpr int kAttackers = 500;
constexpr int kHonest = 4;
constexpr int kRequests = 5000;  // of each honest client
constexpr char kRequest[] = "GET / HTTP/1.1\r\nHost: localhost\r\n\r\n";
constexpr char kPage[] = "hello";

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

long residentKiB() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmRSS:")) return std::atol(line.c_str() + 6);
    return 0;
}

/// A server that runs, the polled kind on a thread of its own.
template <class Server>
class Running {
public:
    Running() {
        server_.setLimits(WebServer::Limits::hardened());
        server_.setMaxKeepAliveRequests(0);
        server_.setKeepAliveTimeout(60);
        server_.addPage("/", WebPageStatic(kPage, sizeof kPage - 1, "text/plain"));
        server_.open("127.0.0.1", 0);
        if constexpr (std::is_same_v<Server, PolledWebServer>) loop_ = std::thread([this] { run(); });
    }
    ~Running() { close(); }

    [[nodiscard]] std::unique_ptr<Client> connect() {
        auto client = std::make_unique<Client>();
        client->open("127.0.0.1", server_.getLocalPort());
        client->setTcpNoDelay(true);
        return client;
    }
    void close() {
        isOver_ = true;
        if constexpr (std::is_same_v<Server, PolledWebServer>) server_.breakWait();
        if (loop_.joinable()) loop_.join();
        server_.close();
    }

private:
    void run() {
        if constexpr (std::is_same_v<Server, PolledWebServer>)
            while (!isOver_) {
                server_.wait(-1);
                server_.update();
            }
    }

    Server server_;
    std::atomic<bool> isOver_ = false;
    std::thread loop_;
};

void ask(Client& client) {
    int n = sizeof kRequest - 1;
    client.send(kRequest, n);
    std::string reply;
    while (reply.find(kPage) == std::string::npos) {
        char bytes[4096];
        int got = sizeof bytes;
        if (!client.receive(bytes, got) || got == 0) std::abort();
        reply.append(bytes, static_cast<std::size_t>(got));
    }
}

template <class Server>
void measureIdle(const char* name) {
    Running<Server> server;
    ask(*server.connect());
    const long before = residentKiB();
    std::vector<std::unique_ptr<Client>> idle;
    for (int i = 0; i < kIdle; ++i) {
        idle.push_back(server.connect());
        ask(*idle.back());
    }
    const double each = static_cast<double>(residentKiB() - before) / kIdle;
    const auto begin = Clock::now();
    server.close();
    std::printf("%s: %.1f KiB for an idle connection with its peer, closed with %d of them in %.1f ms\n", name, each,
                kIdle, milliseconds(Clock::now() - begin));
}

/// A peer that resets its connections, so that the ports are free at once.
template <class Server>
void measureChurn(const char* name) {
    Running<Server> server;
    const auto countFolder = [](const char* path) {
        return std::distance(std::filesystem::directory_iterator(path), {});
    };
    const auto once = [&server](int i) {
        const auto client = server.connect();
        if (i % 2 == 0) ask(*client);
        const linger none{1, 0};
        ::setsockopt(client->getDescriptor(), SOL_SOCKET, SO_LINGER, &none, sizeof none);
    };
    for (int i = 0; i < 1000; ++i) once(i);
    const long before = residentKiB();
    for (int i = 0; i < kChurn; ++i) once(i);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    std::printf("%s: %d connections later: %+ld KiB, %td descriptors, %td threads\n", name, kChurn,
                residentKiB() - before, countFolder("/proc/self/fd"), countFolder("/proc/self/task"));
}

template <class Server>
void measureAttack(const char* name) {
    Running<Server> server;
    std::atomic<bool> isOver = false;
    std::vector<std::unique_ptr<Client>> attackers;
    for (int i = 0; i < kAttackers; ++i) attackers.push_back(server.connect());
    std::thread attack([&] {
        // Each sends a byte ten times a second, and begins anew when it is thrown out.
        while (!isOver) {
            const auto next = Clock::now() + std::chrono::milliseconds(100);
            for (auto& attacker : attackers) {
                int n = 1;
                if (!attacker->send("G", n)) attacker = server.connect();
            }
            std::this_thread::sleep_until(next);
        }
    });
    std::vector<std::vector<double>> times(kHonest);
    std::vector<std::thread> honest;
    for (auto& mine : times)
        honest.emplace_back([&server, &mine] {
            for (int i = 0; i < kRequests; ++i) {
                const auto begin = Clock::now();
                ask(*server.connect());
                mine.push_back(milliseconds(Clock::now() - begin));
            }
        });
    for (auto& thread : honest) thread.join();
    isOver = true;
    attack.join();
    std::vector<double> all;
    for (const auto& mine : times) all.insert(all.end(), mine.begin(), mine.end());
    std::sort(all.begin(), all.end());
    std::printf(
        "%s: with %d attackers a new connection is answered in %.2f ms (median), %.2f ms (99 %%), %.2f ms (all)\n",
        name, kAttackers, all[all.size() / 2], all[all.size() * 99 / 100], all.back());
}

}  // namespace

int main() {
    setDiagnosticSink([](DiagnosticStream, std::string_view) {});  // a line for each attacker that is thrown out
    measureIdle<ThreadedWebServer>("threaded");
    measureIdle<PolledWebServer>("polled");
    measureChurn<ThreadedWebServer>("threaded");
    measureChurn<PolledWebServer>("polled");
    measureAttack<ThreadedWebServer>("threaded");
    measureAttack<PolledWebServer>("polled");
}
