#include <tests/events/Wire.h>

#include <Varnex/events/EventReader.h>
#include <Varnex/events/HelloEvent.h>
#include <Varnex/events/MessageEvent.h>
#include <Varnex/events/RotationEvent.h>
#include <Varnex/events/ServerInfoEvent.h>
#include <Varnex/events/ServerInfoQueryEvent.h>
#include <Varnex/events/StatusEvent.h>
#include <Varnex/events/TrackedPointsEvent.h>
#include <Varnex/events/TranslationEvent.h>
#include <Varnex/events/TranslationRotationEvent.h>

#include <sys/utsname.h>

using namespace Varnex;

namespace {

/// One event of each class of the library, with its bytes and those of a copy and of an assigned event.
struct Sample {
    std::shared_ptr<Event> event;
    std::string wire;
    std::function<std::string()> wireOfCopies;
};

template <class T>
Sample sample(const T& event, const char* hex) {
    const auto original = std::make_shared<T>(event);
    return {original, bytesOf(hex), [original] {
                T copy(*original);
                const std::unique_ptr<Event> assigned(T::create());
                dynamic_cast<T&>(*assigned) = copy;
                return wireOf(copy) + wireOf(*assigned);
            }};
}

std::vector<Sample> samples() {
    HandleEvent handle("h1");
    handle.setValue(0x0102030405060708);
    RotationEvent rotation("r", false, true);
    rotation.set(1, 0, -1, 0.5);
    ServerInfoEvent info;
    info.setStatus(-1);
    info.setId(-25536);
    info.setPort(65535);
    info.setMask(0xffffff00);
    info.setHostAddress("127.0.0.1");
    info.setHostName("pc");
    ServerInfoQueryEvent query;
    query.setMask(-256);
    query.setId(2);
    TranslationEvent translation("h", true, false);
    translation.set(1, 2, 3);
    StatusEvent status("a");
    status.setStatus(7);
    TranslationRotationEvent both("b", true, true);
    both.set(1, 2, 3, 4, 5, 6, 7);
    TrackedPointsEvent points("p");
    points.push(1, 2, 3, 4, 5, -6);
    points.push(0, 0, 0, 0.5, 0x01020304, 7);
    HelloEvent hello("me", "", 1, -2);
    hello.setSysText1("x86_64");
    hello.setSysText2("OS 1");
    hello.setSysText3("pc");
    return {
        sample(Event(), "56583031 0000000c 0000 0000"),
        sample(handle, "56583031 00000018 0014 0000 0002 6831 0102030405060708"),
        sample(MessageEvent(3, "hi"), "56583031 00000012 000a 0000 0003 0002 6869"),
        sample(rotation,
               "56583031 0000002b 00170000 000172 0000000000000000 00000001 3f800000 00000000 bf800000 3f000000"),
        sample(info, "56583031 00000025 0005 0000 ffff 9c40 ffff ffffff00 0009 3132372e302e302e31 0002 7063"),
        sample(query, "56583031 00000012 0006 0000 ffffff00 0002"),
        sample(TransformEvent("t", true, false), "56583031 0000001b 0016 0000 0001 74 0000000000000000 0001 0000"),
        sample(translation, "56583031 00000027 00150000 000168 0000000000000000 00010000 3f800000 40000000 40400000"),
        sample(status, "56583031 0000001b 0018 0000 0001 61 0000000000000000 00000007"),
        sample(both,
               "56583031 00000037 0019 0000 0001 62 0000000000000000 0001 0001"
               "3f800000 40000000 40400000 40800000 40a00000 40c00000 40e00000"),
        sample(points,
               "56583031 0000004b 001a 0000 0001 70 0000000000000000 00000002"
               "3f800000 40000000 40400000 40800000 00000005 fffffffa"
               "00000000 00000000 00000000 3f000000 01020304 00000007"),
        sample(hello, "56583031 00000028 00080000 00026d65 0000 0001fffe 00067838365f3634 00044f532031 00027063"),
    };
}

TEST(StandardEventsTest, HaveTheirBytesAlsoAsCopiesAndComeBackWhateverPiecesTheyArriveIn) {
    for (const auto& [event, wire, wireOfCopies] : samples()) {
        SCOPED_TRACE(event->type()->name);
        EXPECT_EQ(wireOf(*event), wire);
        EXPECT_EQ(wireOf(*received(std::istringstream(wire))), wire);
        EXPECT_EQ(wireOf(*parsed(wire + "rest")), wire);
        for (std::size_t first = 1; first <= wire.size(); ++first) {
            ScriptedReceiver receiver, other;
            receiver.pieceSizes = other.pieceSizes = {first, first == 1 ? 1 : wire.size()};
            receiver.bytes = other.bytes = wire + "next";
            EXPECT_EQ(wireOf(*EventReader(&receiver).read().event), wire);
            EXPECT_EQ(wire.size() > 12 ? wireOf(*received(&other)) : wire, wire);  // no fields: it needs the reader
            EXPECT_EQ(receiver.bytes, "next");
            EXPECT_EQ(other.bytes, wire.size() > 12 ? "next" : wire + "next");
        }
        event->setTag(0xbeef);
        const std::string tagged = wire.substr(0, 10) + "\xbe\xef" + wire.substr(12);
        EXPECT_EQ(wireOfCopies(), tagged + tagged);
        EXPECT_EQ(parsed(tagged)->getTag(), 0xbeef);
    }
}

TEST(StandardEventsTest, AreRefusedWhenCutAndSurviveEveryShorterDeclaredLength) {
    const CapturedDiagnostics lines;
    for (const Sample& sample : samples())
        for (std::size_t length = 0; length < sample.wire.size(); ++length) {
            std::string wire = sample.wire.substr(0, length);
            EXPECT_EQ(parsed(wire), nullptr);
            EXPECT_EQ(received(std::istringstream(wire)), nullptr);
            if (length < 12) continue;
            wire[7] = static_cast<char>(length);
            EXPECT_NE(parsed(wire), nullptr) << sample.event->type()->name << ' ' << length;
        }
}

TEST(EventClassesTest, NullTextsAreEmptyAndHelloTellsThisMachineUnlessItIsToBeReceived) {
    MessageEvent message(1, "a"), none(1, nullptr);
    StatusEvent status("a"), nobody(nullptr);
    message.setMessageText(nullptr);
    status.setHandle(nullptr);
    EXPECT_EQ(message.getText() + none.getText() + status.getHandle() + nobody.getHandle(), "");
    utsname names{};
    ASSERT_EQ(::uname(&names), 0);
    const HelloEvent hello("me", "you", 1, 2);
    EXPECT_EQ(hello.getSysText1(), names.machine);
    EXPECT_EQ(hello.getSysText2(), std::string(names.sysname) + " " + names.release);
    EXPECT_EQ(hello.getSysText3(), names.nodename);
    EXPECT_EQ(wireOf(*std::unique_ptr<Event>(HelloEvent::create())).substr(12), std::string(14, '\0'));
}

TEST(EventClassesTest, FloatsMayBeSetFromArraysOrInParts) {
    const float v[] = {1, 2, 3, 4, 5, 6, 7};
    TranslationRotationEvent array("a"), parts("a"), partArrays("a");
    TranslationEvent translation("a");
    RotationEvent rotation("a");
    array.set(v);
    parts.setTranslation(1, 2, 3);
    parts.setRotation(4, 5, 6, 7);
    partArrays.setTranslation(v);
    partArrays.setRotation(v + 3);
    translation.set(v);
    rotation.set(v + 3);
    const std::string wire = bytesOf("3f800000 40000000 40400000 40800000 40a00000 40c00000 40e00000");
    for (TranslationRotationEvent* event : {&array, &parts, &partArrays}) EXPECT_EQ(wireOf(*event).substr(27), wire);
    EXPECT_EQ(wireOf(translation).substr(27) + wireOf(rotation).substr(27), wire);
}

TEST(EventClassesTest, OnlyPointsThatBeginInsideTheEventAreKept) {
    const std::tuple<const char*, std::size_t, int> all[] = {
        {"ffffffff", 48, -1}, {"00000000", 48, 0}, {"7fffffff", 0, 0},  {"7fffffff", 1, 1},
        {"7fffffff", 24, 1},  {"7fffffff", 25, 2}, {"00000001", 48, 1}, {"00000002", 48, 2}};
    for (const auto& [count, bytes, kept] : all) {
        largestAllocation = 0;
        const auto event = parsed(bytesOf("56583031 000000") + static_cast<char>(26 + bytes) +
                                  bytesOf("001a 0000 0000 0000000000000000") + bytesOf(count) + std::string(bytes, 1));
        const auto& points = dynamic_cast<TrackedPointsEvent&>(*event);
        EXPECT_EQ(points.getCount(), kept) << count << ' ' << bytes;
        EXPECT_EQ(points.getPoints().size(), static_cast<std::size_t>(std::max(kept, 0))) << count << ' ' << bytes;
        EXPECT_EQ(wireOf(*event).size(), 26 + 24 * points.getPoints().size());
        EXPECT_LT(largestAllocation, 5000u);
    }
}

TEST(EventClassesTest, PointsReadTwiceAreAppendedAndTheFirstOnesSent) {
    struct ReadableAgain : TrackedPointsEvent {
        void readFrom(std::string wire) {
            _buffer = _pos = wire.data();
            _size = static_cast<int>(wire.size());
            read();
        }
    } event;
    TrackedPointsEvent source("p");
    source.set({{1, 2, 3, 4, 5, 6}, {6, 5, 4, 3, 2, 1}});
    event.readFrom(wireOf(source));
    event.readFrom(wireOf(source));
    EXPECT_EQ(event.getPoints().size(), 4u);
    EXPECT_EQ(wireOf(event), wireOf(source));
}

}  // namespace
