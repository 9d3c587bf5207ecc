#include <tests/events/LargestAllocation.h>
#include <tests/events/ProbeEvent.h>
#include <tests/support/CapturedDiagnostics.h>
#include <tests/support/Scripted.h>

#include <Varnex/events/MessageEvent.h>

#include <gtest/gtest.h>

using namespace Varnex;

namespace {

const std::string kIncomplete = "ERROR: Got incomplete Varnex event\n";
const std::string kNotRead =
    "ERROR: No valid data in Event::read(), did you forget to call first ParentClass::getFields() then the getFields "
    "method of your Event specialisation?\n";
const std::string kNoType = "ERROR: Got Varnex event of unknown type (typeID = -1)\n";
const std::string kProbe = bytesOf("56583031 0000000e 03e8 0000 0001");

std::string withLength(const char* length) {
    return bytesOf("56583031") + bytesOf(length) + bytesOf("000a 0000");
}

struct Refused {
    const char* name;
    std::string bytes;
    std::string errors;
    std::string output = {};
    std::string left = {};  ///< what stays unread of a connection
    int receives = 1;
    int failReceive = 0, failWait = 0;
    bool takesZero = false;
};

void PrintTo(const Refused& refused, std::ostream* os) {
    *os << refused.name;
}

class RefusedEventTest : public testing::TestWithParam<Refused> {
protected:
    ~RefusedEventTest() override { ProbeEvent::createsNothing = false; }
    const CapturedDiagnostics lines_;
    const LargestAllocation largest_;
};

INSTANTIATE_TEST_SUITE_P(
    Each, RefusedEventTest,
    testing::Values(
        Refused{"OneByteOfHeader", "V", kIncomplete, "", "", 2},
        Refused{"HeaderCutShort", kMessage.substr(0, 11), kIncomplete, "", "", 2},
        Refused{"NoFieldsArrive", kMessage.substr(0, 12), kIncomplete, "", "", 2},
        Refused{"FieldsCutShort", kMessage.substr(0, 17), kIncomplete, "", "", 3},
        Refused{"FirstWaitFails", kMessage, "", "", kMessage, 0, 0, 1},
        Refused{"WaitForFieldsFails", kMessage, "", "", kMessage.substr(12), 1, 0, 2},
        Refused{"FirstReceiveFails", kMessage, "", "", kMessage, 1, 1},
        Refused{"ReceiveOfFieldsFails", kMessage, "", "", kMessage.substr(12), 2, 2},
        Refused{"UnknownType", kUnknown, "ERROR: Got Varnex event of unknown type (typeID = 7)\n", "",
                bytesOf("01020304")},
        Refused{"NegativeType", bytesOf("56583031 0000000c 8000 0000"),
                "ERROR: Got Varnex event of unknown type (typeID = -32768)\n"},
        Refused{"WrongMagic", "HTTP/1.1 200 OK", "ERROR: HTTPis not a valid Event magic key !\n" + kNoType, kNotRead,
                " OK"},
        Refused{"UnprintableMagic", bytesOf("1b5b7fff 0000000c 0000 0000"),
                "ERROR: ?[??is not a valid Event magic key !\n" + kNoType, kNotRead},
        Refused{"MagicWithNul", bytesOf("56580031 0000000c 0000 0000"),
                "ERROR: VXis not a valid Event magic key !\n" + kNoType, kNotRead},
        Refused{"Length0", withLength("00000000"), kIncomplete},
        Refused{"Length11", withLength("0000000b"), kIncomplete},
        Refused{"LengthAboveLimit", withLength("10000001"), kIncomplete},
        Refused{"LengthWithSign", withLength("80000000"), kIncomplete},
        Refused{"LengthWithSignAnd12", withLength("8000000c"), kIncomplete},
        Refused{"LargestLength", withLength("ffffffff"), kIncomplete},
        // A connection takes no receive of 0 bytes, and one that did would report 0: neither gets a plain event.
        Refused{"WithoutFields", kPlain + kMessage, "", "", kMessage, 2},
        Refused{"WithoutFieldsWhereZeroIsTaken", kPlain + kMessage, kIncomplete, "", kMessage, 2, 0, 0, true},
        Refused{"FactoryGivesNull", kProbe + kMessage, "ERROR: Cannot create Varnex event\n", "", kMessage, 2}),
    [](const auto& instance) { return std::string(instance.param.name); });

TEST_P(RefusedEventTest, GivesFalseWithItsLinesAndNoLargeAllocation) {
    ProbeEvent::createsNothing = true;
    ScriptedReceiver receiver;
    receiver.bytes = GetParam().bytes;
    receiver.failReceive = GetParam().failReceive;
    receiver.failWait = GetParam().failWait;
    receiver.takesZero = GetParam().takesZero;
    Event* event = nullptr;
    EXPECT_FALSE(Event::receive(&receiver, event));
    EXPECT_EQ(event, nullptr);
    EXPECT_EQ(lines_.errors(), GetParam().errors);
    EXPECT_EQ(lines_.output(), GetParam().output);
    EXPECT_EQ(hexOf(receiver.bytes), hexOf(GetParam().left));
    EXPECT_EQ(receiver.receives, GetParam().receives);
    EXPECT_EQ(receiver.waits, std::max(GetParam().receives, GetParam().failWait));
    EXPECT_LT(largest_.bytes(), 5000u);
}

TEST_P(RefusedEventTest, IncompleteOnesAreSilentFromStream) {
    ProbeEvent::createsNothing = true;
    std::istringstream stream(GetParam().bytes);
    stream.setstate(GetParam().failReceive + GetParam().failWait > 0 ? std::ios::badbit : std::ios::goodbit);
    Event* event = nullptr;
    // An event without fields is no trouble here.
    EXPECT_EQ(Event::receive(stream, event), GetParam().bytes.starts_with(kPlain));
    EXPECT_EQ(std::unique_ptr<Event>(event) != nullptr, GetParam().bytes.starts_with(kPlain));
    EXPECT_EQ(lines_.errors(), GetParam().errors == kIncomplete ? "" : GetParam().errors);
    EXPECT_EQ(lines_.output(), GetParam().output);
    EXPECT_LT(largest_.bytes(), 5000u);
}

TEST(EventReceiveTest, EveryPrefixOfAnEventIsIncomplete) {
    for (std::size_t size = 0; size < kMessage.size(); ++size) {
        const CapturedDiagnostics lines;
        EXPECT_EQ(parsed(kMessage.substr(0, size)), nullptr);
        EXPECT_EQ(lines.errors(), kIncomplete);
        std::istringstream stream(kMessage.substr(0, size));
        Event* event = nullptr;
        EXPECT_FALSE(Event::receive(stream, event));
        EXPECT_EQ(lines.errors(), kIncomplete) << "a stream is silent";
    }
    Event* event = nullptr;
    const CapturedDiagnostics lines;
    EXPECT_FALSE(Event::parse(nullptr, 18, event) || Event::parse(kMessage.data(), -1, event));
}

TEST(EventReceiveTest, EndBeforeAnyByteIsTrueWithoutEvent) {
    const CapturedDiagnostics lines;
    ScriptedReceiver receiver;
    Event* event = reinterpret_cast<Event*>(&receiver);
    EXPECT_TRUE(Event::receive(&receiver, event));
    EXPECT_EQ(event, nullptr);
    EXPECT_EQ(lines.errors(), "");
}

TEST(EventReceiveTest, AsksForWhatIsMissingAfterAWaitEach) {
    ScriptedReceiver receiver;
    receiver.bytes = kMessage + kMessage;
    receiver.pieceSizes = {1, 4, 100, 2, 100};
    Event* event = nullptr;
    ASSERT_TRUE(Event::receive(&receiver, event));
    delete event;
    EXPECT_EQ(receiver.receives, 5);
    EXPECT_EQ(receiver.waits, 5);
    EXPECT_EQ(receiver.bytes, kMessage);
}

TEST(EventReceiveTest, EventThatForgetsItsHeaderIsReportedAndReceived) {
    const CapturedDiagnostics lines;
    ProbeEvent::readsHeader = false;
    EXPECT_NE(parsed(kProbe), nullptr);
    ProbeEvent::readsHeader = true;
    EXPECT_EQ(lines.output(), kNotRead);
}

TEST(EventReceiveTest, WrongMagicIsRefusedWhateverTypesThereAre) {
    const CapturedDiagnostics lines;
    const EventType minusOne("MinusOne", -1, &Event::create);
    EXPECT_EQ(parsed("HTTP/1.1 200 OK"), nullptr);
}

TEST(EventReceiveTest, LimitIsThatOfTheWholeEventAndZeroMeansNone) {
    const CapturedDiagnostics lines;
    EXPECT_EQ(Event::getMaxLength(), 268435456u);
    for (const auto& [limit, accepted] : {std::pair{17u, false}, {18u, true}, {0u, true}}) {
        Event::setMaxLength(limit);
        EXPECT_EQ(parsed(kMessage) != nullptr, accepted) << limit;
    }
    Event::setMaxLength(268435456);
    EXPECT_EQ(lines.errors(), kIncomplete);
}

}  // namespace
