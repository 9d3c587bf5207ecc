#include <tests/events/Samples.h>
#include <tests/support/CapturedDiagnostics.h>
#include <tests/support/Scripted.h>

#include <Varnex/events/EventReader.h>
#include <Zendro/SysInfo.h>

#include <gtest/gtest.h>

using namespace Varnex;

namespace {

class StandardEventsTest : public testing::TestWithParam<Sample> {
protected:
    /// Whether this is the sample again, tag included.
    void expectSample(Event* received, const std::string& wire) const {
        ASSERT_NE(received, nullptr);
        const std::unique_ptr<Event> owner(received);
        EXPECT_EQ(hexOf(wireOf(*received)), hexOf(wire));
        EXPECT_EQ(GetParam().tell(*received), GetParam().told);
        EXPECT_EQ(received->type(), GetParam().event->type());
    }
    const CapturedDiagnostics lines_;
};

INSTANTIATE_TEST_SUITE_P(Each, StandardEventsTest, testing::ValuesIn(samples()),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST_P(StandardEventsTest, HasItsBytesAndOnlyThePlainEventPrintsALine) {
    EXPECT_EQ(hexOf(wireOf(*GetParam().event)), hexOf(GetParam().wire));
    const bool plain = std::string(GetParam().name) == "Event";
    EXPECT_EQ(lines_.errors(), plain ? "ERROR: Unknown type in Event::addFields() - did you forget to register your "
                                       "event type ?\n"
                                     : "");
}

TEST_P(StandardEventsTest, ComesBackFromStreamAndMemory) {
    std::istringstream stream(GetParam().wire + GetParam().wire);
    Event* event = nullptr;
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(Event::receive(stream, event));
        expectSample(event, GetParam().wire);
    }
    expectSample(parsed(GetParam().wire + "rest").release(), GetParam().wire);
}

TEST_P(StandardEventsTest, ComesBackInWhateverPiecesItArrives) {
    const std::size_t size = GetParam().wire.size();
    for (std::size_t first = 1; first <= size; ++first) {
        ScriptedReceiver receiver;
        receiver.pieceSizes = {first, first == 1 ? 1 : size};
        receiver.bytes = GetParam().wire + (size == 12 ? "" : GetParam().wire) + "next";
        if (Event* event = nullptr; size > 12) {  // without fields it needs the reader
            ASSERT_TRUE(Event::receive(&receiver, event));
            expectSample(event, GetParam().wire);
            receiver.pieceSizes = {first, first == 1 ? 1 : size};
        }
        expectSample(EventReader(&receiver).read().event.release(), GetParam().wire);
        EXPECT_EQ(receiver.bytes, "next");
    }
}

TEST_P(StandardEventsTest, CopiesCarryEveryFieldAndTheTag) {
    Event& event = *GetParam().event;
    event.setTag(0xbeef);
    const std::string tagged = GetParam().wire.substr(0, 10) + "\xbe\xef" + GetParam().wire.substr(12);
    EXPECT_EQ(hexOf(GetParam().wireOfCopies(event)), hexOf(tagged + tagged));
    expectSample(parsed(tagged).release(), tagged);
    EXPECT_EQ(parsed(tagged)->getTag(), 0xbeef);
    event.setTag(0);
}

TEST_P(StandardEventsTest, SurvivesEveryShorterDeclaredLength) {
    for (unsigned char length = 12; length < GetParam().wire.size(); ++length) {
        std::string wire = GetParam().wire.substr(0, length);
        wire[7] = static_cast<char>(length);
        EXPECT_NE(parsed(wire), nullptr) << int{length};
    }
}

TEST(EventClassesTest, NullTextsAreEmptyAndSettersReplace) {
    MessageEvent message(1, nullptr);
    EXPECT_EQ(hexOf(wireOf(message).substr(12)), "00010000");
    message.setMessageText("a");
    message.setMessageText(nullptr);
    EXPECT_EQ(message.getText(), "");
    StatusEvent status(nullptr);
    EXPECT_EQ(hexOf(wireOf(status).substr(12)), digits("0000 0000000000000000 00000000"));
    status.setHandle("a");
    status.setHandle(nullptr);
    EXPECT_EQ(status.getHandle(), "");
}

TEST(EventClassesTest, HelloTellsThisMachineUnlessItIsToBeReceived) {
    const auto& machine = Zendro::SysInfo::the();
    EXPECT_EQ(inWords(machine.getMachine(), machine.getSystem(), machine.getHostName()), [] {
        const HelloEvent e("me", "you", 1, 2);
        return inWords(e.getSysText1(), e.getSysText2(), e.getSysText3());
    }());
    const std::unique_ptr<Event> empty(HelloEvent::create());
    EXPECT_EQ(hexOf(wireOf(*empty).substr(12)), "0000000000000000000000000000");
}

TEST(EventClassesTest, FloatsMayBeSetFromAnArrayOrInParts) {
    const float v[] = {1, 2, 3, 4, 5, 6, 7};
    TranslationRotationEvent whole("a"), parts("a");
    whole.set(v);
    parts.setTranslation(1, 2, 3);
    parts.setRotation(4, 5, 6, 7);
    EXPECT_EQ(wireOf(whole).substr(27), bytesOf("3f800000 40000000 40400000 40800000 40a00000 40c00000 40e00000"));
    EXPECT_EQ(wireOf(parts), wireOf(whole));
    TranslationEvent translation("a");
    translation.set(v);
    RotationEvent rotation("a");
    rotation.set(v + 3);
    EXPECT_EQ(wireOf(translation).substr(27) + wireOf(rotation).substr(27), wireOf(whole).substr(27));
}

struct Points {
    const char* count;
    std::size_t bytes;
    int kept;
};

TEST(EventClassesTest, OnlyPointsThatBeginInsideTheEventAreKept) {
    const Points all[] = {
        {"ffffffff", 48, 0}, {"80000000", 48, 0}, {"00000000", 48, 0}, {"7fffffff", 0, 0},  {"7fffffff", 1, 1},
        {"7fffffff", 24, 1}, {"7fffffff", 25, 2}, {"00000001", 48, 1}, {"00000002", 48, 2},
    };
    for (const auto& [count, bytes, kept] : all) {
        const auto length = static_cast<char>(26 + bytes);
        const auto event = parsed(bytesOf("56583031 000000") + length + bytesOf("001a 0000 0000 0000000000000000") +
                                  bytesOf(count) + std::string(bytes, '\1'));
        ASSERT_NE(event, nullptr);
        const auto& points = dynamic_cast<TrackedPointsEvent&>(*event);
        EXPECT_EQ(std::max(points.getCount(), 0), kept) << count << ' ' << bytes;
        EXPECT_EQ(points.getPoints().size(), static_cast<std::size_t>(kept)) << count << ' ' << bytes;
        EXPECT_EQ(wireOf(*event).size(), static_cast<std::size_t>(26 + 24 * kept));
        if (bytes == 25) {
            EXPECT_EQ(points.getPoints()[1].flags, 0);
        }
    }
}

/// Points that can be read from one buffer again and again.
struct ReadTwice : TrackedPointsEvent {
    void readFrom(const std::string& wire) {
        const auto block = exactBlock(wire);
        _buffer = _pos = block.get();
        _size = static_cast<int>(wire.size());
        read();
        _buffer = _pos = nullptr;
    }
};

TEST(EventClassesTest, PointsReadTwiceAreAppendedAndTheFirstOnesSent) {
    TrackedPointsEvent source("p");
    source.set({{1, 2, 3, 4, 5, 6}, {6, 5, 4, 3, 2, 1}});
    ReadTwice event;
    event.readFrom(wireOf(source));
    event.readFrom(wireOf(source));
    EXPECT_EQ(event.getPoints().size(), 4u);
    EXPECT_EQ(wireOf(event), wireOf(source));
    event.set({});
    EXPECT_EQ(event.getCount(), 0);
}

}  // namespace
