#include "Process.h"

#include <Varnex/events/EventType.h>
#include <tests/support/LoopbackPair.h>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using nlohmann::json;

struct Listening : Serving {
    explicit Listening(const std::string& options) : Serving("listen 127.0.0.1:0 " + options) {}
    json object() { return json::parse(text(Output), nullptr, false); }
};

// What is sent; the type that is printed of it, and those fields that are not empty, 0 or false.
const std::pair<std::string, std::string> kSent[] = {
    {"0 --tag 65535", R"("Event":{})"},
    {"message --code -3 --text '--hi \"\xC3\xA9\xFF'", R"("MessageEvent":{"code":-3,"text":"--hi \"\u00e9\ufffd"})"},
    {"Varnex::HandleEvent --value 18446744073709551615", R"("HandleEvent":{"value":18446744073709551615})"},
    {"STATUS --status -2147483648 --handle ''", R"("StatusEvent":{"status":-2147483648})"},
    {"Transform --handle h --flag1", R"("TransformEvent":{"handle":"h","flag1":true})"},
    {"Translation --flag1 no --flag2 --translation -1,2.5,1e-7",
     R"("TranslationEvent":{"flag2":true,"translation":[-1.0,2.5,1e-07]})"},
    {"23 --rotation 0.1,nan,-inf,3e38", R"("RotationEvent":{"rotation":[0.1,null,null,3e+38]})"},
    {"TranslationRotation --rotation 4,5,6,7 --translation 1,2,3",
     R"("TranslationRotationEvent":{"translation":[1,2,3],"rotation":[4,5,6,7]})"},
    {"TrackedPoints --point -1,0,0,1,-7,0x10 --point 0,0,0,0,1,2",
     R"("TrackedPointsEvent":{"points":[{"x":-1.0,"y":0,"z":0,"w":1.0,"id":-7,"flags":16},)"
     R"({"x":0,"y":0,"z":0,"w":0,"id":1,"flags":2}]})"},
    {"ServerInfo --status 1 --id -2 --port 65535 --mask 0xff --host-address ::1",
     R"("ServerInfoEvent":{"status":1,"id":-2,"port":65535,"mask":255,"hostAddress":"::1"})"},
    {"ServerInfoQuery --mask -1 --id 9", R"("ServerInfoQueryEvent":{"mask":-1,"id":9})"},
    {"Hello --name1 a --name2 b --number2 2", R"("HelloEvent":{"name1":"a","name2":"b","number2":2})"},
};

TEST(CommandTest, SendsEachRegisteredTypeAndListenPrintsItsFields) {
    Listening listener("--json --count " + std::to_string(std::size(kSent)));
    EXPECT_EQ(std::size(kSent), Varnex::EventType::getTypes().size());
    for (const auto& [words, printed] : kSent) {
        ASSERT_EQ(Process("send " + listener.address + " " + words).wait(), 0) << printed;
        json line = listener.object();
        ASSERT_TRUE(line.is_object()) << printed;
        json &fields = line["fields"], empty = json::object();
        for (const char* machine : {"sysText1", "sysText2", "sysText3"})
            EXPECT_EQ(fields.erase(machine), line["id"] == 8 ? 1U : 0U);
        for (auto& [name, value] : fields.items()) empty[name] = json(value.type());
        empty.update(json::parse("{" + printed + "}")[std::string(line["type"])]);
        EXPECT_EQ(fields, empty);
        EXPECT_EQ(line["tag"], line["id"] == 0 ? 65535 : 0);
    }
    EXPECT_EQ(listener.wait(), 0);
}

TEST(CommandTest, GarbageIsReportedAndTheNextClientServed) {
    Listening listener("--count 1000");
    const std::pair<std::string, const char*> cases[] = {
        {"\x01\x02\xFF garbage without a magic", "broken: wrong magic"},
        {std::string("VX01\xFF\xFF\xFF\xFF\0\x0A\0\0", 12), "is above the limit"},
        {std::string("VX01\0\0\0\x10\x7F\x7F\0\0abcd", 16), "unknown type 32639, 16 bytes skipped"},
    };
    for (const auto& [garbage, note] : cases) {
        Varnex::Client client;
        client.open("127.0.0.1", listener.port());
        ASSERT_TRUE(sends(client, garbage));
        EXPECT_THAT(listener.text(Process::Error), testing::HasSubstr(note));
    }
    EXPECT_EQ(Process("send " + listener.address + " Message --tag 5 --text 'a\x1B[2Jb'").wait(), 0);
    const char* const shown = " MessageEvent tag=5 code=0 text=\"a\\x1b[2Jb\"";
    EXPECT_THAT(listener.text(Process::Output), testing::HasSubstr(shown));
    EXPECT_EQ(listener.wait(SIGINT), 0);
}

TEST(CommandTest, SimulateSendsTimeStampedBodiesOnACircle) {
    Listening listener("--json --count 40 --summary");
    Process tracker("simulate " + listener.address + " --bodies 2 --rate 1000");
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
    Listening listener("--quiet");
    Process sender("send " + listener.address + " Message --count 0");
    EXPECT_EQ(Process("listen " + listener.address).wait(), 1) << "the port is taken";
    EXPECT_EQ(Listening("--seconds 0.01").wait(), 0);
    EXPECT_EQ(listener.wait(SIGTERM), 0);
    EXPECT_EQ(sender.wait(), 1);
}

TEST(CommandTest, SaysInOneLineWhatIsWrong) {
    const std::tuple<const char*, int, const char*> cases[] = {
        {"", 2, "A subcommand is required"},
        {"fly", 2, "unknown subcommand or option \"fly\""},
        {"listen 70000", 2, "\"70000\": the port must be a number from 0 to 65535"},
        {"listen 127.0.0.1", 2, "\"127.0.0.1\": expected [HOST:]PORT"},
        {"listen 0 extra more", 2, "unexpected argument \"extra\" (see varnex listen --help)"},
        {"listen 0 --color red", 2, "--color: \"red\" is not auto, always or never"},
        {"send 127.0.0.1:4711x Message", 2, "the port must be a number"},
        {"send 127.0.0.1:1 'Mess\nage' --text a", 2, "unknown event type \"Mess\\nage\" (see varnex types)"},
        {"send 127.0.0.1:1", 2, "TYPE is required"},
        {"send --discover Mess", 2, "unknown event type \"Mess\""},
        {"simulate", 2, "HOST:PORT or --discover is required"},
        {"watch 127.0.0.1:1 --discover", 2, "either HOST:PORT or --discover, not both"},
        {"watch 127.0.0.1:1 --id 1", 2, "--discover"},
        {"servers --interface nothing0", 2, "no such IPv4 network interface"},
        {"serial /dev/null", 2, "PORT and HOST:PORT are required"},
        {"serial /dev/null 127.0.0.1:1 --baud 12", 2, "Invalid baud rate 12 (must be 110, "},
        {"serial /dev/null 127.0.0.1:1", 1, "Port is not a tty!"},
        {"hub --host 192.0.2.1 --port 0", 1, "192.0.2.1:0: Cannot open server"},
        {"send 127.0.0.1:1 Message --handle h", 2, "unexpected argument \"--handle\""},
        {"send 127.0.0.1:1 Rotation --rotation 1 2 3", 2, "unexpected argument \"2\""},
        {"send 127.0.0.1:1 Message --text", 2, "--text: the value is missing (see varnex send HOST:PORT MessageEvent"},
        {"send 127.0.0.1:1 Message --code 32768", 2, "--code: \"32768\" is not a number from -32768 to 32767"},
        {"send 127.0.0.1:1 Message --tag 65536", 2, "not a whole number from 0 to 65535 (see varnex send --help)"},
        {"send 127.0.0.1:1 Message", 1, "127.0.0.1:1: Cannot connect to server (Connection refused)"},
    };
    for (const auto& [words, exitCode, expected] : cases) {
        Process process(words);
        const std::string error = process.rest(Process::Error);
        EXPECT_TRUE(error.substr(0, 8) == "varnex: " && error.find('\n') == error.size() - 1) << error;
        EXPECT_THAT(error, testing::HasSubstr(expected));
        EXPECT_EQ(process.rest(Process::Output), "");
        EXPECT_EQ(process.wait(), exitCode) << error;
    }
}
