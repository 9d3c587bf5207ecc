#include "Process.h"

#include <Varnex/events/EventType.h>
#include <Varnex/transport/Client.h>

#include <nlohmann/json.hpp>

using nlohmann::json;
using Words = std::vector<std::string>;

static Words join(Words words, const Words& more) {
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

/// `varnex listen` on loopback, with the address it listens at.
struct Listening : Process {
    explicit Listening(const Words& options) : Process(join({"listen", "127.0.0.1:0"}, options)) {
        const std::string first = line(Error);
        EXPECT_EQ(first.substr(0, 13), "listening on ");
        address = first.substr(std::min<std::size_t>(13, first.size()));
    }
    json object() { return json::parse(line(Output), nullptr, false); }
    bool notes(const std::string& text) { return line(Error).find(text) != std::string::npos; }
    std::string address;
};

static int run(const Words& words) {
    Process process(words);
    EXPECT_EQ(process.rest(Process::Error), "");
    return process.wait();
}

struct Sent {
    Words words;
    const char* printed;  // the type and the fields
};

const Sent kSent[] = {
    {{"0", "--tag", "65535"}, R"("Event":{})"},
    {{"message", "--code", "-3", "--text", "--hi \"\xC3\xA9\xFF"},
     R"("MessageEvent":{"code":-3,"text":"--hi \"\u00e9\ufffd"})"},
    {{"Varnex::HandleEvent", "--handle", "h", "--value", "18446744073709551615"},
     R"("HandleEvent":{"handle":"h","value":18446744073709551615})"},
    {{"STATUS", "--status", "-2147483648", "--handle", ""},
     R"("StatusEvent":{"handle":"","value":0,"status":-2147483648})"},
    {{"Transform", "--flag1"}, R"("TransformEvent":{"handle":"","value":0,"flag1":true,"flag2":false})"},
    {{"Translation", "--flag1", "no", "--flag2", "--translation", "-1,2.5,1e-7"},
     R"("TranslationEvent":{"handle":"","value":0,"flag1":false,"flag2":true,"translation":[-1.0,2.5,1e-07]})"},
    {{"23", "--rotation", "0.1,nan,-inf,3e38"},
     R"("RotationEvent":{"handle":"","value":0,"flag1":false,"flag2":false,"rotation":[0.1,null,null,3e+38]})"},
    {{"TranslationRotation", "--rotation", "4,5,6,7", "--translation", "1,2,3"},
     R"("TranslationRotationEvent":{"handle":"","value":0,"flag1":false,"flag2":false,"translation":[1,2,3],)"
     R"("rotation":[4,5,6,7]})"},
    {{"TrackedPoints", "--point", "-1,0,0,1,-7,0x10", "--point", "0,0,0,0,1,2"},
     R"("TrackedPointsEvent":{"handle":"","value":0,"points":[{"x":-1.0,"y":0,"z":0,"w":1.0,"id":-7,"flags":16},)"
     R"({"x":0,"y":0,"z":0,"w":0,"id":1,"flags":2}]})"},
    {{"ServerInfo", "--status", "1", "--id", "-2", "--port", "65535", "--mask", "0xff", "--host-address", "::1"},
     R"("ServerInfoEvent":{"status":1,"id":-2,"port":65535,"mask":255,"hostAddress":"::1","hostName":""})"},
    {{"ServerInfoQuery", "--mask", "-1", "--id", "9"}, R"("ServerInfoQueryEvent":{"mask":-1,"id":9})"},
    {{"Hello", "--name1", "a", "--name2", "b", "--number1", "1", "--number2", "2"},
     R"("HelloEvent":{"name1":"a","name2":"b","number1":1,"number2":2})"},
};

TEST(CommandTest, SendsEachRegisteredTypeAndListenPrintsItsFields) {
    Listening listener({"--json", "--count", std::to_string(std::size(kSent))});
    EXPECT_EQ(std::size(kSent), Varnex::EventType::getTypes().size());
    for (const Sent& sent : kSent) {
        ASSERT_EQ(run(join({"send", listener.address}, sent.words)), 0) << sent.printed;
        json line = listener.object();
        ASSERT_TRUE(line.is_object()) << sent.printed;
        for (const char* machine : {"sysText1", "sysText2", "sysText3"})
            EXPECT_EQ(line["fields"].erase(machine), line["id"] == 8 ? 1U : 0U);
        EXPECT_EQ(line["tag"], line["id"] == 0 ? 65535 : 0);
        const json printed = {{std::string(line["type"]), line["fields"]}};
        EXPECT_EQ(printed, json::parse("{" + std::string(sent.printed) + "}"));
    }
    EXPECT_EQ(listener.wait(), 0);
}

TEST(CommandTest, GarbageIsReportedAndTheNextClientServed) {
    Listening listener({});
    const std::pair<std::string, const char*> cases[] = {
        {"\x01\x02\xFF garbage without a magic", "broken: wrong magic"},
        {std::string("VX01\xFF\xFF\xFF\xFF\0\x0A\0\0", 12), "is above the limit"},
        {std::string("VX01\0\0\0\x10\x7F\x7F\0\0abcd", 16), "unknown type 32639, 16 bytes skipped"},
    };
    for (const auto& [garbage, note] : cases) {
        Varnex::Client client;
        client.open("127.0.0.1", static_cast<unsigned short>(std::stoi(listener.address.substr(10))));
        int n = static_cast<int>(garbage.size());
        ASSERT_TRUE(client.send(garbage.data(), n));
        EXPECT_TRUE(listener.notes(note)) << note;
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
        const auto fields = listener.object()["fields"];
        EXPECT_EQ(fields["handle"], i % 2 == 0 ? "body1" : "body2");
        const double x = fields["translation"][0], y = fields["translation"][1], z = fields["rotation"][2];
        EXPECT_NEAR(x * x + y * y, 1, 1e-5);
        EXPECT_NEAR(1 - 2 * z * z, -y, 1e-5) << "looks along the tangent";
    }
    const auto summary = listener.object()["summary"];
    EXPECT_TRUE(summary["events"] == 40 && summary["latencies"] == 40) << summary;
    EXPECT_TRUE(summary["latencyMedianNs"] > 0 && summary["latencyMedianNs"] <= summary["latency99Ns"]) << summary;
    EXPECT_EQ(listener.wait(), 0);
    EXPECT_EQ(tracker.wait(), 1) << "nobody takes its events any more";
}

TEST(CommandTest, EndsCleanlyOnSignals) {
    Listening listener({"--quiet"});
    Process sender({"send", listener.address, "Message", "--count", "0"});
    Process never({"listen", listener.address});
    EXPECT_EQ(never.wait(), 1) << "the port is taken";
    EXPECT_EQ(Listening({"--seconds", "0.01"}).wait(), 0);
    listener.signal(SIGTERM);
    EXPECT_EQ(listener.wait(), 0);
    EXPECT_EQ(sender.wait(), 1);
}

TEST(CommandTest, SaysInOneLineWhatIsWrong) {
    const std::string port1 = "127.0.0.1:1";
    const std::tuple<Words, int, const char*> cases[] = {
        {{}, 2, "A subcommand is required"},
        {{"fly"}, 2, "unknown subcommand or option \"fly\""},
        {{"listen", "70000"}, 2, "\"70000\": the port must be a number from 0 to 65535"},
        {{"send", "127.0.0.1:4711x", "Message"}, 2, "the port must be a number"},
        {{"send", port1, "Mess\nage", "--text", "a"}, 2, "unknown event type \"Mess\\nage\""},
        {{"send", port1}, 2, "TYPE is required"},
        {{"send", port1, "Message", "--handle", "h"}, 2, "unexpected argument \"--handle\""},
        {{"send", port1, "Message", "--code", "9e9"}, 2, "--code: \"9e9\" is not a number from -32768 to 32767"},
        {{"send", port1, "Message", "--tag", "65536"}, 2, "--tag: \"65536\" is not a "},
        {{"send", port1, "Message"}, 1, "127.0.0.1:1: Cannot connect to server (Connection refused)"},
    };
    for (const auto& [words, exitCode, expected] : cases) {
        Process process(words);
        const std::string error = process.rest(Process::Error);
        EXPECT_TRUE(error.substr(0, 8) == "varnex: " && error.find('\n') == error.size() - 1) << error;
        EXPECT_NE(error.find(expected), std::string::npos) << error;
        EXPECT_EQ(process.rest(Process::Output), "");
        EXPECT_EQ(process.wait(), exitCode) << error;
    }
}
