#include "Process.h"

#include <Varnex/events/MessageEvent.h>
#include <Varnex/transport/UDP.h>
#include <tests/support/EventWire.h>
#include <tests/support/LoopbackPair.h>
#include <tests/support/NetworkNamespace.h>
#include <tests/support/SerialPair.h>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using testing::HasSubstr;

namespace {

// All tests of this program, and the commands they start, live in a network where nothing else is discovered.
const bool inOwnNetwork = enterOwnNetwork();

#define NEEDS_OWN_NETWORK \
    if (!inOwnNetwork) GTEST_SKIP() << "the system does not allow a network of one's own"

struct Hub : Serving {
    explicit Hub(const std::string& options) : Serving("hub --host 127.0.0.1 " + options) {}

    /// A client that the hub has taken in.
    std::unique_ptr<Varnex::Client> connect() {
        auto client = std::make_unique<Varnex::Client>();
        client->open("127.0.0.1", port());
        EXPECT_THAT(text(Error), HasSubstr(" connected"));
        return client;
    }
};

/// The next line that has this part; empty at the end.
std::string lineWith(Process& process, const std::string& part, Process::Stream stream = Process::Output) {
    std::string line;
    do line = process.text(stream);
    while (!line.empty() && line.find(part) == std::string::npos);
    return line;
}

const std::string kUnknown = std::string("VX01\0\x03\0\0\x7F\x7F\0\x07", 12) + std::string(3 * 65536 - 12, 'u');

TEST(HubCommandTest, RelaysEventsOfAnyTypeToTheOthersAndDropsGarbageAlone) {
    Hub hub("--port 0 --json --status 0.02");
    const auto sender = hub.connect(), garbler = hub.connect(), reader = hub.connect(), second = hub.connect();
    Varnex::MessageEvent one(3, "one"), two(3, "two"), third(3, "answer");
    const std::string events = wireOf(one) + kUnknown + wireOf(two), answer = wireOf(third);
    ASSERT_TRUE(sends(*sender, events) && sends(*garbler, "this is no event"));
    EXPECT_THAT(hub.text(Process::Error), HasSubstr(" dropped: wrong magic"));
    for (const auto& other : {reader.get(), second.get()}) EXPECT_TRUE(receivedAll(*other, events.size()) == events);
    ASSERT_TRUE(sends(*reader, answer));
    for (const auto& other : {sender.get(), second.get()})
        EXPECT_EQ(receivedAll(*other, answer.size()), answer) << "and nothing came back before";
    EXPECT_TRUE(sends(*second, events.substr(0, 10)) && second->close());
    EXPECT_THAT(hub.text(Process::Error), HasSubstr(" closed"));
    json status, expected{{1, 1, 0}, {1, 3, 0}};
    for (int i = 0; i < 1000 && status != expected; ++i) {
        const json line = json::parse(hub.text(Process::Output));
        status.clear();
        for (const json& each : line["clients"]) status.push_back({1, each["out"], each["waiting"]});
        if (status != expected) continue;
        EXPECT_TRUE(line["lost"] == 1 && line["dropped"] == 0 && line["clients"][0]["in"] == 3) << line;
    }
    EXPECT_EQ(status, expected);
    EXPECT_EQ(hub.wait(SIGTERM), 0);
}

TEST(HubCommandTest, PolicyDecidesAboutAClientThatNeverReads) {
    Hub hub("--port 0 --policy disconnect --queue-bytes 100000 --quiet");
    const auto stalled = hub.connect();
    Process sender("send " + hub.address + " Message --count 0 --text " + std::string(30000, 'x'));
    EXPECT_THAT(hub.text(Process::Error), HasSubstr(" connected"));
    EXPECT_THAT(hub.text(Process::Error), HasSubstr(" dropped: its queue is full"));
    EXPECT_EQ(hub.wait(SIGINT), 0);
    EXPECT_EQ(sender.wait(), 1);
}

TEST(HubCommandTest, IsDiscoveredAndFoundAgainAfterARestart) {
    NEEDS_OWN_NETWORK;
    Process nobody("servers --seconds 0.1");
    EXPECT_THAT(nobody.rest(Process::Error), HasSubstr("no server answered"));
    EXPECT_EQ(nobody.wait(), 1);

    std::unique_ptr<Hub> hub;
    Process watcher("watch --discover --interface lo --mask 2 --id 9 --json");
    std::string port = "0";
    for (const char* text : {"first", "second"}) {
        hub = std::make_unique<Hub>("--port " + port + " --discover --interface lo --mask 3 --id 9");
        port = std::to_string(hub->port());
        EXPECT_EQ(watcher.text(Process::Error), hub->address + " connected");
        EXPECT_NE(lineWith(*hub, " connected", Process::Error), "");
        const std::string where = "--discover --interface lo --id 9 ";
        EXPECT_EQ(Process("send " + where + "Message --text " + text).wait(), 0);
        EXPECT_NE(lineWith(watcher, "\"text\":\"" + std::string(text) + "\""), "");
        EXPECT_EQ(Process("simulate " + where + "--name left --rate 100 --seconds 0.2").wait(), 0);
        EXPECT_NE(lineWith(watcher, "\"left1\""), "");

        Process servers("servers --seconds 0.3 --json --interface lo --id 9");
        const json found = json::parse(servers.rest(Process::Output));
        EXPECT_TRUE(found["address"] == "127.0.0.1" && found["port"] == hub->port() && found["mask"] == 3) << found;
        EXPECT_EQ(hub->wait(SIGTERM), 0);
        EXPECT_EQ(watcher.text(Process::Error), hub->address + " closed; connecting again");
    }
    EXPECT_EQ(watcher.wait(SIGTERM), 0);
}

TEST(SerialCommandTest, CarriesBytesBothWaysUntilOneSideEnds) {
    std::string all;
    for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
    for (const bool lineEnds : {true, false}) {
        SerialPair pair;
        Varnex::Server server;
        server.open("127.0.0.1", 0);
        Process bridge("serial " + pair.line->getPort() + " 127.0.0.1:" + std::to_string(server.getLocalPort()));
        const std::unique_ptr<Varnex::Client> peer(server.getClient());
        pair.line->close();
        EXPECT_THAT(bridge.text(Process::Error), HasSubstr(" connected to 127.0.0.1:"));
        EXPECT_TRUE(sends(*pair.master, all) && receivedAll(*peer, all.size()) == all);
        ASSERT_TRUE(sends(*peer, all));
        std::string back;
        while (back.size() < all.size() && pair.master->waitForData(20000) == Varnex::Receiver::WaitData)
            back += received(*pair.master);
        EXPECT_EQ(back, all);
        lineEnds ? pair.master->close() : peer->close();
        EXPECT_TRUE(!lineEnds || received(*peer).empty());
        peer->close();
        EXPECT_THAT(bridge.rest(Process::Error), HasSubstr(lineEnds ? "/dev/pts/" : "127.0.0.1:"));
        EXPECT_EQ(bridge.wait(), 1);
    }
}

TEST(DoctorCommandTest, TellsEachFindingOnOneLineWithTheFix) {
    NEEDS_OWN_NETWORK;
    Varnex::Server taken;
    taken.open("127.0.0.1", 0);
    const std::string port = std::to_string(taken.getLocalPort());
    ChildProcess doctor("prlimit --nofile=90 '" VARNEX_COMMAND "' doctor --interface lo --port " + port);
    const char* const expected[] = {"^ok      interface lo 127.0.0.1 sends and hears multicast on 224.21.12.68:4711$",
                                    "^(ok|warning) +host name ",
                                    "^warning TCP port [0-9]+ is taken and shared: .*; fix: ss -ltnp .*$",
                                    "^warning descriptor limit is 90, for some 30 connections.*; fix: ulimit -n 1024$"};
    for (const char* line : expected) EXPECT_THAT(doctor.text(Process::Output), testing::ContainsRegex(line));
    EXPECT_EQ(doctor.rest(Process::Output) + doctor.rest(Process::Error), "");
    EXPECT_EQ(doctor.wait(), 0);
    Varnex::UDP holder;
    holder.setPort(4711);
    ASSERT_TRUE(holder.open());
    Process held("doctor --interface 127.0.0.1");
    EXPECT_THAT(held.text(Process::Output),
                testing::ContainsRegex("^problem interface lo .*\\(Address already in use\\); fix: "));
    EXPECT_EQ(held.rest(Process::Error), "varnex: problems found: 1\n");
    EXPECT_EQ(held.wait(), 1);
    ASSERT_EQ(std::system("ip link set lo down"), 0);
    Process down("doctor --json");
    const json finding = json::parse(down.text(Process::Output));
    EXPECT_TRUE(finding["level"] == "warning" && finding["fix"] == "ip link set lo up") << finding;
}

}  // namespace
