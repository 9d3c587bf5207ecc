#include "Process.h"

#include <Varnex/events/EventType.h>
#include <Varnex/transport/Client.h>

#include <nlohmann/json.hpp>

namespace {

using Words = std::vector<std::string>;

/// Starts `varnex listen` on loopback and knows its address.
struct Listening : Process {
    explicit Listening(const Words& options) : Process(arguments(options)) {
        const std::string prefix = "listening on ";
        const std::string first = line(Error);
        EXPECT_EQ(first.substr(0, prefix.size()), prefix);
        address = first.substr(std::min(prefix.size(), first.size()));
    }
    static Words arguments(Words options) {
        options.insert(options.begin(), {"listen", "127.0.0.1:0"});
        return options;
    }
    std::string address;
};

int run(Words arguments) {
    Process process(std::move(arguments));
    EXPECT_EQ(process.rest(Process::Error), "");
    return process.wait();
}

struct Sent {
    Words arguments;
    const char* type;
    const char* fields;
};

const Sent kSent[] = {
    {{"0", "--tag", "65535"}, "Event", "{}"},
    {{"message", "--code", "-3", "--text", "--hi \"\xC3\xA9\xFF"},
     "MessageEvent",
     R"({"code":-3,"text":"--hi \"\u00e9\ufffd"})"},
    {{"Varnex::HandleEvent", "--handle", "h", "--value", "18446744073709551615"},
     "HandleEvent",
     R"({"handle":"h","value":18446744073709551615})"},
    {{"STATUS", "--status", "-2147483648", "--handle", ""},
     "StatusEvent",
     R"({"handle":"","value":0,"status":-2147483648})"},
    {{"Transform", "--flag1"}, "TransformEvent", R"({"handle":"","value":0,"flag1":true,"flag2":false})"},
    {{"Translation", "--flag1", "no", "--flag2", "--translation", "-1,2.5,1e-7"},
     "TranslationEvent",
     R"({"handle":"","value":0,"flag1":false,"flag2":true,"translation":[-1.0,2.5,1e-07]})"},
    {{"23", "--rotation", "0.1,nan,-inf,3e38"},
     "RotationEvent",
     R"({"handle":"","value":0,"flag1":false,"flag2":false,"rotation":[0.1,null,null,3e+38]})"},
    {{"TranslationRotation", "--rotation", "4,5,6,7", "--translation", "1,2,3"},
     "TranslationRotationEvent",
     R"({"handle":"","value":0,"flag1":false,"flag2":false,"translation":[1,2,3],"rotation":[4,5,6,7]})"},
    {{"TrackedPoints", "--point", "-1,0,0,1,-7,0x10", "--point", "0,0,0,0,1,2"},
     "TrackedPointsEvent",
     R"({"handle":"","value":0,"points":[{"x":-1.0,"y":0.0,"z":0.0,"w":1.0,"id":-7,"flags":16},)"
     R"({"x":0.0,"y":0.0,"z":0.0,"w":0.0,"id":1,"flags":2}]})"},
    {{"ServerInfo", "--status", "1", "--id", "-2", "--port", "65535", "--mask", "0xff", "--host-address", "::1"},
     "ServerInfoEvent",
     R"({"status":1,"id":-2,"port":65535,"mask":255,"hostAddress":"::1","hostName":""})"},
    {{"ServerInfoQuery", "--mask", "-1", "--id", "9"}, "ServerInfoQueryEvent", R"({"mask":-1,"id":9})"},
    {{"Hello", "--name1", "a", "--name2", "b", "--number1", "1", "--number2", "2"},
     "HelloEvent",
     R"({"name1":"a","name2":"b","number1":1,"number2":2})"},
};

TEST(CommandTest, SendsEachRegisteredTypeAndListenPrintsItsFields) {
    Listening listener({"--json", "--count", std::to_string(std::size(kSent))});
    EXPECT_EQ(std::size(kSent), Varnex::EventType::getTypes().size());
    for (const Sent& sent : kSent) {
        Words arguments{"send", listener.address};
        arguments.insert(arguments.end(), sent.arguments.begin(), sent.arguments.end());
        ASSERT_EQ(run(arguments), 0) << sent.type;
        auto line = nlohmann::json::parse(listener.line(Process::Output), nullptr, false);
        ASSERT_TRUE(line.is_object()) << sent.type;
        EXPECT_EQ(line["type"], sent.type);
        EXPECT_EQ(line["tag"], line["id"] == 0 ? 65535 : 0);
        for (const char* machine : {"sysText1", "sysText2", "sysText3"})
            EXPECT_EQ(line["fields"].erase(machine), line["id"] == 8 ? 1U : 0U);
        EXPECT_EQ(line["fields"], nlohmann::json::parse(sent.fields)) << line;
    }
    EXPECT_EQ(listener.wait(), 0);
}

TEST(CommandTest, GarbageIsReportedAndTheNextClientServed) {
    Listening listener({});
    const std::string garbage[] = {"\x01\x02\xFF garbage without a magic",
                                   std::string("VX01\xFF\xFF\xFF\xFF\0\x0A\0\0", 12),
                                   std::string("VX01\0\0\0\x10\x7F\x7F\0\0abcd", 16)};
    const char* const notes[] = {"broken: wrong magic", "is above the limit", "unknown type 32639, 16 bytes skipped"};
    for (std::size_t i = 0; i < std::size(garbage); ++i) {
        Varnex::Client client;
        client.open("127.0.0.1", static_cast<unsigned short>(std::stoi(listener.address.substr(10))));
        int n = static_cast<int>(garbage[i].size());
        ASSERT_TRUE(client.send(garbage[i].data(), n));
        EXPECT_NE(listener.line(Process::Error).find(notes[i]), std::string::npos) << notes[i];
    }
    EXPECT_EQ(run({"send", listener.address, "Message", "--text", "a\x1B[2Jb", "--tag", "5"}), 0);
    const std::string line = listener.line(Process::Output);
    EXPECT_NE(line.find(" MessageEvent tag=5 code=0 text=\"a\\x1b[2Jb\""), std::string::npos) << line;
    listener.signal(SIGINT);
    EXPECT_EQ(listener.wait(), 0);
}

TEST(CommandTest, SimulateSendsTimeStampedBodiesOnACircle) {
    Listening listener({"--json", "--count", "40", "--summary"});
    Process tracker({"simulate", listener.address, "--bodies", "2", "--rate", "1000"});
    for (int i = 0; i < 40; ++i) {
        const auto fields = nlohmann::json::parse(listener.line(Process::Output))["fields"];
        EXPECT_EQ(fields["handle"], i % 2 == 0 ? "body1" : "body2");
        const double x = fields["translation"][0], y = fields["translation"][1], z = fields["rotation"][2];
        EXPECT_NEAR(x * x + y * y, 1, 1e-5);
        EXPECT_NEAR(1 - 2 * z * z, -y, 1e-5) << "looks along the tangent";
    }
    const auto summary = nlohmann::json::parse(listener.line(Process::Output))["summary"];
    EXPECT_EQ(summary["events"], 40);
    EXPECT_EQ(summary["latencies"], 40);
    EXPECT_GT(summary["latencyMedianNs"], 0);
    EXPECT_LE(summary["latencyMedianNs"], summary["latency99Ns"]);
    EXPECT_EQ(listener.wait(), 0);
    EXPECT_EQ(tracker.wait(), 1) << "nobody takes its events any more";
}

TEST(CommandTest, EndsCleanlyOnSignals) {
    Listening listener({"--quiet"});
    Process sender({"send", listener.address, "Message", "--count", "0"});
    Process never({"listen", listener.address});
    EXPECT_EQ(never.wait(), 1) << "the port is taken";
    Listening forAWhile({"--seconds", "0.01"});
    EXPECT_EQ(forAWhile.wait(), 0);
    listener.signal(SIGTERM);
    EXPECT_EQ(listener.wait(), 0);
    EXPECT_EQ(sender.wait(), 1);
}

struct Refused {
    Words arguments;
    int exitCode;
    const char* error;
};

const Refused kRefused[] = {
    {{}, 2, "A subcommand is required"},
    {{"fly"}, 2, "unknown subcommand or option \"fly\""},
    {{"listen", "70000"}, 2, "\"70000\": the port must be a number from 0 to 65535"},
    {{"send", "127.0.0.1:4711x", "Message"}, 2, "the port must be a number"},
    {{"send", "127.0.0.1:1", "Mess\nage", "--text", "a"}, 2, "unknown event type \"Mess\\nage\""},
    {{"send", "127.0.0.1:1"}, 2, "TYPE is required"},
    {{"send", "127.0.0.1:1", "Message", "--handle", "h"}, 2, "unexpected argument \"--handle\""},
    {{"send", "127.0.0.1:1", "Message", "--code", "32768"},
     2,
     "--code: \"32768\" is not a number from -32768 to 32767"},
    {{"send", "127.0.0.1:1", "Message", "--tag", "65536"}, 2, "--tag: \"65536\" is not a number from 0 to 65535"},
    {{"send", "127.0.0.1:1", "Message"}, 1, "127.0.0.1:1: Cannot connect to server (Connection refused)"},
};

TEST(CommandTest, SaysInOneLineWhatIsWrong) {
    for (const Refused& refused : kRefused) {
        Process process(refused.arguments);
        const std::string error = process.rest(Process::Error);
        EXPECT_EQ(error.substr(0, 8), "varnex: ");
        EXPECT_NE(error.find(refused.error), std::string::npos) << error;
        EXPECT_EQ(error.find('\n'), error.size() - 1) << error;
        EXPECT_EQ(process.rest(Process::Output), "");
        EXPECT_EQ(process.wait(), refused.exitCode) << error;
    }
}

}  // namespace
