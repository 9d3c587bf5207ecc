#include <tests/events/Wire.h>

using namespace Varnex;

namespace {

const std::string kIncomplete = "ERROR: Got incomplete Varnex event\n";
const std::string kNotRead =
    "ERROR: No valid data in Event::read(), did you forget to call first ParentClass::getFields() then the getFields "
    "method of your Event specialisation?\n";
const std::string kUnknownType = "ERROR: Got Varnex event of unknown type (typeID = ";
const std::string kBadKey = "is not a valid Event magic key !\n" + kUnknownType + "-1)\n";

struct Refused {
    std::string bytes, errors;
    int receives = 1;
    std::string left = {};  ///< what stays unread of a connection
    std::string output = {};
    int failReceive = 0, failWait = 0;
    bool takesZero = false;
};

const Refused kRefused[] = {
    {"V", kIncomplete, 2},
    {kMessage.substr(0, 12), kIncomplete, 2},
    {kMessage.substr(0, 17), kIncomplete, 3},
    {kMessage, "", 0, kMessage, "", 0, 1},
    {kMessage, "", 1, kMessage.substr(12), "", 0, 2},
    {kMessage, "", 1, kMessage, "", 1},
    {kMessage, "", 2, kMessage.substr(12), "", 2},
    {kUnknown, kUnknownType + "7)\n", 1, kUnknown.substr(12)},
    {bytesOf("56583031 0000000c 8000 0000"), kUnknownType + "-32768)\n"},
    {"HTTP/1.1 200 OK", "ERROR: HTTP" + kBadKey, 1, " OK", kNotRead},
    {bytesOf("1b5b7fff 0000000c 0000 0000"), "ERROR: ?[??" + kBadKey, 1, "", kNotRead},
    {bytesOf("56580031 0000000c 0000 0000"), "ERROR: VX" + kBadKey, 1, "", kNotRead},
    {bytesOf("56583031 00000000 000a 0000"), kIncomplete},
    {bytesOf("56583031 0000000b 000a 0000"), kIncomplete},
    {bytesOf("56583031 10000001 000a 0000"), kIncomplete},
    {bytesOf("56583031 8000000c 000a 0000"), kIncomplete},
    {bytesOf("56583031 ffffffff 000a 0000"), kIncomplete},
    // A connection takes no receive of 0 bytes, and one that did would report 0: neither gets a plain event.
    {kPlain + kMessage, "", 2, kMessage},
    {kPlain + kMessage, kIncomplete, 2, kMessage, "", 0, 0, true},
    {kUnmade + kMessage, "ERROR: Cannot create Varnex event\n", 2, kMessage},
    {kPoor + kMessage, "ERROR: Cannot create Varnex event\n", 2, kMessage},
};

TEST(EventReceiveTest, RefusesWithItsLinesAndNoLargeAllocationAndStreamsBreakOffSilently) {
    const EventType minusOne("MinusOne", -1, &Event::create);  // which a wrong magic does not become
    for (const auto& [bytes, errors, receives, left, output, failReceive, failWait, takesZero] : kRefused) {
        SCOPED_TRACE(testing::PrintToString(bytes) + errors);
        ScriptedReceiver receiver;
        receiver.bytes = bytes;
        receiver.failReceive = failReceive;
        receiver.failWait = failWait;
        receiver.takesZero = takesZero;
        const CapturedDiagnostics lines;
        largestAllocation = 0;
        Event* event = reinterpret_cast<Event*>(&receiver);
        EXPECT_FALSE(Event::receive(&receiver, event));
        EXPECT_EQ(event, nullptr);
        EXPECT_EQ(lines.errors(), errors);
        EXPECT_EQ(lines.output(), output);
        EXPECT_EQ(receiver.bytes, left);
        EXPECT_EQ(receiver.receives, receives);
        EXPECT_EQ(receiver.waits, std::max(receives, failWait));
        if (failReceive + failWait == 0 && !bytes.starts_with(kPlain)) {
            EXPECT_EQ(received(std::istringstream(bytes)), nullptr);
            EXPECT_EQ(lines.errors(), errors == kIncomplete ? errors : errors + errors);
            EXPECT_EQ(parsed(bytes), nullptr);
            EXPECT_EQ(lines.errors(), errors == kIncomplete ? errors + errors : errors + errors + errors);
        }
        EXPECT_LT(largestAllocation, 5000u);
    }
}

TEST(EventReceiveTest, EndIsTrueWithoutEventAndEachMissingPieceIsWaitedFor) {
    ScriptedReceiver receiver;
    Event* event = reinterpret_cast<Event*>(&receiver);
    EXPECT_TRUE(Event::receive(&receiver, event));
    EXPECT_EQ(event, nullptr);
    receiver.bytes = kMessage + kMessage;
    receiver.pieceSizes = {1, 4, 100, 2, 100};
    EXPECT_NE(received(&receiver), nullptr);
    EXPECT_EQ(receiver.receives, 1 + 5);
    EXPECT_EQ(receiver.waits, 1 + 5);
    EXPECT_EQ(receiver.bytes, kMessage);
}

TEST(EventReceiveTest, NoReadOfAClassThatMisreadsItsHeaderGoesBeyondTheEvent) {
    const ProbeEvent::Action never = [](ProbeEvent&) {};
    const ProbeEvent::Action twice = [](ProbeEvent& e) { e.takeHeader(), e.takeHeader(); };
    const ProbeEvent::Action late = [](ProbeEvent& e) { e.getField(std::string(12, ' ').data(), 12), e.takeHeader(); };
    const std::tuple<ProbeEvent::Action, const char*, std::string> all[] = {
        {never, "56583031 0000000c 03e8 0000", kNotRead},
        {twice, "56583031 0000001c 03e8 0000 56583031 7fffffff 03e8 0000 01020304", ""},
        {twice, "56583031 0000001c 03e8 0000 56583031 00000001 03e8 0000 01020304", ""},
        {twice, "56583031 0000001c 03e8 0000 56583031 ffffffff 03e8 0000 01020304", ""},
        {late, "56583031 0000001c 03e8 0000 56583031 7fffffff 03e8 0000 01020304", ""},
    };
    for (const auto& [read, hex, output] : all) {
        std::string beyond(100000, '.');
        ProbeEvent::reads = [&, readHeader = read](ProbeEvent& e) {
            readHeader(e);
            for (const int size : {100000, 29, 13}) e.getField(beyond.data(), size);
        };
        const CapturedDiagnostics lines;
        EXPECT_NE(parsed(bytesOf(hex)), nullptr);
        EXPECT_EQ(beyond, std::string(100000, '.')) << hex;
        EXPECT_EQ(lines.output(), output) << hex;
    }
    ProbeEvent::reads = &ProbeEvent::takeHeader;
}

TEST(EventReceiveTest, LimitIsThatOfTheWholeEventAndZeroMeansNone) {
    const CapturedDiagnostics lines;
    EXPECT_EQ(Event::getMaxLength(), 268435456u);
    for (const auto& [limit, accepted] : {std::pair{17u, false}, {18u, true}, {0u, true}}) {
        Event::setMaxLength(limit);
        EXPECT_EQ(parsed(kMessage) != nullptr, accepted) << limit;
    }
    Event::setMaxLength(268435456);
    Event* event = nullptr;
    EXPECT_FALSE(Event::parse(nullptr, 18, event) || Event::parse(kMessage.data(), -1, event));
    EXPECT_EQ(lines.errors(), kIncomplete + kIncomplete + kIncomplete);
}

}  // namespace
