// Reading a browser's request into a record and writing a reply, in memory: nanoseconds and allocations, beside
// Boost.Beast and, where it is installed, POCO.
#include "AllocationCounter.h"
#include "MemoryTarget.h"
#include "RepeatingConnection.h"

#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/streams/ioStream.h>

#include <benchmark/benchmark.h>
#include <boost/asio/buffer.hpp>
#include <boost/beast/http.hpp>
#ifdef VARNEX_BENCH_POCO
#include <Poco/MemoryStream.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <istream>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

namespace {

using Varnex::ProtocolHTTP;
namespace beast = boost::beast;

constexpr std::string_view kRequest =
    "GET /scene/lab-2/overview?view=top&layer=trackers HTTP/1.1\r\n"
    "Host: tracking.example.org:8080\r\n"
    "User-Agent: Mozilla/5.0 (X11; Linux x86_64; rv:128.0) Gecko/20100101 Firefox/128.0\r\n"
    "Accept: text/html,application/xhtml+xml,application/xml;q=0.9,image/avif,image/webp,*/*;q=0.8\r\n"
    "Accept-Language: en-GB,en;q=0.7,de;q=0.3\r\n"
    "Accept-Encoding: gzip, deflate, br, zstd\r\n"
    "Referer: http://tracking.example.org:8080/scene/lab-2/\r\n"
    "Connection: keep-alive\r\n"
    "Cookie: session=4f1d0c7e9ab34a5c8f6e2d1b0a998877; theme=dark; layout=two-columns\r\n"
    "Upgrade-Insecure-Requests: 1\r\n"
    "Sec-Fetch-Dest: document\r\n"
    "Sec-Fetch-Mode: navigate\r\n"
    "Sec-Fetch-Site: same-origin\r\n"
    "\r\n";

constexpr std::string_view kReplyHeader[][2] = {
    {"Date", "Mon, 12 May 2025 10:15:30 GMT"},          {"Server", "Varnex"},
    {"Content-Type", "text/html; charset=utf-8"},       {"Content-Length", "100"},
    {"Last-Modified", "Sun, 11 May 2025 08:00:00 GMT"}, {"ETag", "\"5f3a-61c2b7d9\""},
    {"Cache-Control", "max-age=60, must-revalidate"},   {"Connection", "keep-alive"}};
const std::string kBody(100, 'b');

/// Delivers the same bytes each time it is restarted.
class MemorySource : public std::streambuf {
public:
    MemorySource() { restart(); }
    void restart() { setg(bytes_.data(), bytes_.data(), bytes_.data() + bytes_.size()); }

private:
    std::string bytes_{kRequest};
};

/// A comparison of different products would be none.
void check(bool isAsExpected, const char* what) {
    if (isAsExpected) return;
    std::fprintf(stderr, "%s: not what was expected\n", what);
    std::exit(1);
}

bool isComplete(const ProtocolHTTP::Request& request) {
    return request.uri == "/scene/lab-2/overview" && request.query.getParam("layer") == "trackers" &&
           request.header.params().size() == 12 && request.header.getParam("sec-fetch-site") == "same-origin";
}

/// `read` reads one request into a record.
template <class Read>
void readInto(benchmark::State& state, bool isFresh, Read read) {
    ProtocolHTTP::Request reused;
    check(read(reused) && isComplete(reused), "reading");
    const AllocationReport report(state);
    for (auto _ : state) {
        if (isFresh) {
            ProtocolHTTP::Request fresh;
            benchmark::DoNotOptimize(read(fresh));
        } else {
            benchmark::DoNotOptimize(read(reused));
        }
    }
}

void readByEngine(benchmark::State& state, bool isFresh) {
    RepeatingConnection connection(kRequest);
    ProtocolHTTP engine(nullptr);
    engine.setCommunicator(&connection);
    readInto(state, isFresh, [&](ProtocolHTTP::Request& request) { return engine.receiveRequest(request); });
}
BENCHMARK_CAPTURE(readByEngine, fresh, true);
BENCHMARK_CAPTURE(readByEngine, reused, false);

void readFromStream(benchmark::State& state, bool isFresh) {
    MemorySource source;
    std::istream stream(&source);
    readInto(state, isFresh, [&](ProtocolHTTP::Request& request) {
        source.restart();
        return static_cast<bool>(stream >> request);
    });
}
BENCHMARK_CAPTURE(readFromStream, fresh, true);
BENCHMARK_CAPTURE(readFromStream, reused, false);

using BeastParser = beast::http::request_parser<beast::http::string_body>;

bool parse(BeastParser& parser) {
    beast::error_code error;
    parser.eager(true);
    parser.put(boost::asio::buffer(kRequest), error);
    return parser.is_done() && !error;
}

/// One parser reads one message.
void readByBeast(benchmark::State& state) {
    BeastParser checked;
    check(parse(checked) && checked.get()["sec-fetch-site"] == "same-origin", "readByBeast");
    const AllocationReport report(state);
    for (auto _ : state) {
        BeastParser parser;
        benchmark::DoNotOptimize(parse(parser));
    }
}
BENCHMARK(readByBeast);

void fill(ProtocolHTTP::Reply& reply) {
    reply.version.major = reply.version.minor = 1;
    reply.code = 200;
    reply.phrase = "OK";
    for (const auto& [name, value] : kReplyHeader) reply.header.setParam(name, value);
    reply.body = kBody;
}

void checkReply(const std::string& text, const char* what) {
    std::string expected = "HTTP/1.1 200 OK\r\n";
    for (const auto& [name, value] : kReplyHeader) expected.append(name).append(": ").append(value).append("\r\n");
    check(text == expected + "\r\n" + kBody, what);
}

void writeByEngine(benchmark::State& state) {
    RepeatingConnection connection("");
    ProtocolHTTP engine(nullptr);
    engine.setCommunicator(&connection);
    ProtocolHTTP::Reply reply;
    fill(reply);
    const AllocationReport report(state);
    for (auto _ : state) benchmark::DoNotOptimize(engine.sendReply(reply));
}
BENCHMARK(writeByEngine);

/// `write` puts one reply into the stream.
template <class Write>
void writeToStream(benchmark::State& state, const char* what, Write write) {
    MemoryTarget target(4096);
    std::ostream stream(&target);
    write(stream);
    checkReply(target.written(), what);
    const AllocationReport report(state);
    for (auto _ : state) {
        target.restart();
        write(stream);
    }
}

void writeToStream(benchmark::State& state) {
    ProtocolHTTP::Reply reply;
    fill(reply);
    writeToStream(state, "writeToStream", [&](std::ostream& stream) { stream << reply; });
}
BENCHMARK(writeToStream);

void writeByBeast(benchmark::State& state) {
    beast::http::response<beast::http::string_body> reply(beast::http::status::ok, 11);
    for (const auto& [name, value] : kReplyHeader)
        reply.insert({name.data(), name.size()}, {value.data(), value.size()});
    reply.body() = kBody;
    writeToStream(state, "writeByBeast", [&](std::ostream& stream) { stream << reply; });
}
BENCHMARK(writeByBeast);

#ifdef VARNEX_BENCH_POCO

void readByPoco(benchmark::State& state) {
    Poco::MemoryInputStream stream(kRequest.data(), kRequest.size());
    Poco::Net::HTTPRequest checked;
    checked.read(stream);
    check(stream.good() && checked.size() == 12 && checked.get("sec-fetch-site") == "same-origin", "readByPoco");
    const AllocationReport report(state);
    for (auto _ : state) {
        stream.rdbuf()->reset();
        Poco::Net::HTTPRequest request;
        request.read(stream);
        benchmark::DoNotOptimize(request);
    }
}
BENCHMARK(readByPoco);

void writeByPoco(benchmark::State& state) {
    Poco::Net::HTTPResponse reply(Poco::Net::HTTPMessage::HTTP_1_1, Poco::Net::HTTPResponse::HTTP_OK);
    for (const auto& [name, value] : kReplyHeader) reply.add(std::string(name), std::string(value));
    writeToStream(state, "writeByPoco", [&](std::ostream& stream) {
        reply.write(stream);
        stream.write(kBody.data(), static_cast<std::streamsize>(kBody.size()));
    });
}
BENCHMARK(writeByPoco);

#endif

}  // namespace

BENCHMARK_MAIN();
