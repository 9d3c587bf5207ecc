// 1 GiB over loopback TCP to another process, by plain sockets and by `ioStream`, in turns: rates, and the medians of
// the ratios to plain sockets within a round. Arguments: rounds (7), MiB (1024).
#include <Varnex/streams/ioStream.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Server.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr std::size_t kBlock = 65536;
constexpr std::size_t kLine = 80;  // with its line end
std::size_t total = std::size_t{1} << 30;

using Side = std::function<bool(Varnex::Client&)>;

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "%s failed\n", what);
    std::_Exit(1);
}

/// Seconds until the other process, which receives, has everything.
double move(const Side& send, const Side& receive) {
    Varnex::Server server;
    server.open("127.0.0.1", 0);
    const pid_t child = ::fork();
    if (child == 0) {
        Varnex::Client client;
        client.open("127.0.0.1", server.getLocalPort());
        char done = 1;
        int n = 1;
        ::_exit(receive(client) && client.send(&done, n) ? 0 : 1);
    }
    const std::unique_ptr<Varnex::Client> peer(server.getClient());
    const auto start = std::chrono::steady_clock::now();
    if (!send(*peer)) fail("sending");
    char done = 0;
    int n = 1;
    if (!peer->receive(&done, n) || n != 1) fail("receiving");
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    ::waitpid(child, nullptr, 0);
    return taken.count();
}

bool sendPlainly(Varnex::Client& to) {
    const std::string block(kBlock, 'x');
    for (std::size_t left = total; left > 0;) {
        const auto n = ::send(to.getDescriptor(), block.data(), std::min(kBlock, left), MSG_NOSIGNAL);
        if (n <= 0) return false;
        left -= static_cast<std::size_t>(n);
    }
    return true;
}

bool receivePlainly(Varnex::Client& from) {
    std::string block(kBlock, 0);
    for (std::size_t left = total; left > 0;) {
        const auto n = ::recv(from.getDescriptor(), block.data(), std::min(kBlock, left), 0);
        if (n <= 0) return false;
        left -= static_cast<std::size_t>(n);
    }
    return true;
}

bool writeBlocks(Varnex::Client& to) {
    Varnex::ioStream out(&to, false);
    const std::string block(kBlock, 'x');
    for (std::size_t done = 0; done < total; done += kBlock) out.write(block.data(), kBlock);
    return out.flush().good();
}

bool writeLines(Varnex::Client& to) {
    Varnex::ioStream out(&to, false);
    const std::string line = std::string(kLine - 1, 'x') + '\n';
    for (std::size_t done = 0; done < total; done += kLine) out << line;
    return out.flush().good();
}

bool readBlocks(Varnex::Client& from) {
    Varnex::ioStream in(&from, false);
    std::string block(kBlock, 0);
    for (std::size_t left = total; left > 0;) {
        if (!in.read(block.data(), static_cast<std::streamsize>(std::min(kBlock, left)))) return false;
        left -= static_cast<std::size_t>(in.gcount());
    }
    return true;
}

bool readLines(Varnex::Client& from) {
    Varnex::ioStream in(&from, false);
    std::string line;
    for (std::size_t done = 0; done < total; done += kLine) {
        if (!std::getline(in, line) || line.size() != kLine - 1) return false;
    }
    return true;
}

struct Case {
    const char* name;
    Side send, receive;
    std::vector<double> rates = {}, ratios = {};
};

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

}  // namespace

int main(int count, char** arguments) {
    const int rounds = count > 1 ? std::max(1, std::atoi(arguments[1])) : 7;
    if (count > 2) total = static_cast<std::size_t>(std::max(1, std::atoi(arguments[2]))) << 20;
    Case cases[] = {{"send, recv, 64 KiB", sendPlainly, receivePlainly},
                    {"the same again", sendPlainly, receivePlainly},
                    {"ioStream write, read, 64 KiB", writeBlocks, readBlocks},
                    {"ioStream << lines of 80, read 64 KiB", writeLines, readBlocks},
                    {"ioStream << lines of 80, getline", writeLines, readLines}};
    for (int round = 0; round < rounds; ++round) {
        for (Case& each : cases) {
            each.rates.push_back(static_cast<double>(total) / move(each.send, each.receive) / 1e9);
            each.ratios.push_back(each.rates.back() / cases[0].rates.back());
        }
    }
    for (const Case& each : cases) {
        const auto [least, most] = std::ranges::minmax(each.rates);
        std::printf("%-38s %6.2f GB/s (%.2f to %.2f)  %.3f of send, recv\n", each.name, median(each.rates), least, most,
                    median(each.ratios));
    }
}
