#include <tests/events/LargestAllocation.h>
#include <tests/events/ProbeEvent.h>
#include <tests/events/Samples.h>
#include <tests/support/CapturedDiagnostics.h>
#include <tests/support/Scripted.h>

#include <Varnex/events/EventReader.h>

#include <gtest/gtest.h>

using namespace Varnex;

namespace {

using Status = EventReader::Status;

/// What one read gave, in words.
std::string told(const EventReader::Result& r) {
    const char* const names[] = {"event", "unknown", "closed", "broken", "woken", "timed out"};
    std::string text = names[static_cast<int>(r.status)];
    if (r.typeID != -1) text += " " + std::to_string(r.typeID) + " of " + std::to_string(r.length);
    if (r.lost > 0) text += ", lost " + std::to_string(r.lost);
    if (!r.reason.empty()) text += ": " + r.reason;
    return text + ((r.status == Status::Event) == (r.event != nullptr) ? "\n" : " but the event is wrong\n");
}

std::string readToEnd(EventReader& reader) {
    for (std::string all;;) {
        const EventReader::Result result = reader.read();
        all += told(result);
        if (result.status != Status::Event && result.status != Status::Unknown) return all + told(reader.read());
    }
}

/// Reads `bytes` from a stream and in pieces of many sizes, and expects the same each time, without a printed line.
void expectReads(const std::string& bytes, const std::string& expected, bool resynchronise = false) {
    const CapturedDiagnostics lines;
    std::istringstream stream(bytes);
    EventReader fromStream(stream);
    fromStream.setResynchronise(resynchronise);
    EXPECT_EQ(readToEnd(fromStream), expected) << hexOf(bytes.substr(0, 40));
    for (const std::size_t piece : {1, 2, 3, 5, 11, 13, 4096, 1000000}) {
        ScriptedReceiver receiver;
        receiver.bytes = bytes;
        receiver.pieceSizes = {piece};
        EventReader reader(&receiver);
        reader.setResynchronise(resynchronise);
        EXPECT_EQ(readToEnd(reader), expected) << "pieces of " << piece;
    }
    EXPECT_EQ(lines.errors() + lines.output(), "");
}

TEST(EventReaderTest, TellsEventsUnknownOnesAndTheEndApart) {
    const std::string largeUnknown = bytesOf("56583031 00011170 7fff 0000") + std::string(69988, 'x');
    expectReads(kMessage + kUnknown + kPlain + largeUnknown + kMessage,
                "event 10 of 18\nunknown 7 of 16\nevent 0 of 12\nunknown 32767 of 70000\nevent 10 of 18\nclosed\n"
                "closed\n");
    expectReads("", "closed\nclosed\n");
}

TEST(EventReaderTest, BrokenStreamSaysWhyAndStaysBroken) {
    const std::pair<std::string, std::string> all[] = {
        {"not an event" + kMessage, "wrong magic"},
        {bytesOf("56583031 00000000 000a 0000") + kMessage, "length 0 is below that of a header"},
        {bytesOf("56583031 0000000b 000a 0000") + kMessage, "length 11 is below that of a header"},
        {bytesOf("56583031 10000001 000a 0000"), "length 268435457 is above the limit of 268435456"},
        {bytesOf("56583031 ffffffff 0007 0000"), "length 4294967295 is above the limit of 268435456"},
        {"V", "the peer closed inside a header"},
        {kMessage.substr(0, 11), "the peer closed inside a header"},
        {kMessage.substr(0, 12), "the peer closed inside an event"},
        {kMessage.substr(0, 17), "the peer closed inside an event"},
        {kUnknown.substr(0, 13), "the peer closed inside an event"},
    };
    for (const auto& [bytes, reason] : all)
        expectReads(kMessage + bytes, "event 10 of 18\nbroken: " + reason + "\nbroken: " + reason + "\n");
}

TEST(EventReaderTest, AFailingReceiverBreaksItAndAFailingFactoryDoesNot) {
    const CapturedDiagnostics lines;
    for (const int failing : {1, 2}) {
        ScriptedReceiver receiver;
        receiver.bytes = kMessage;
        (failing == 1 ? receiver.failWait : receiver.failReceive) = failing;
        EventReader reader(&receiver);
        EXPECT_EQ(reader.read().reason, "receiving failed");
        EXPECT_EQ(told(reader.read()), "broken: receiving failed\n");
    }
    ProbeEvent::createsNothing = true;
    std::istringstream events(bytesOf("56583031 0000000c 03e8 0000") + kMessage);
    EventReader reader(events);
    EXPECT_EQ(reader.read().status, EventReader::Status::Unknown);
    EXPECT_EQ(reader.read().status, EventReader::Status::Event);
    ProbeEvent::createsNothing = false;
    std::istringstream stream;
    stream.setstate(std::ios::badbit);
    EXPECT_EQ(EventReader(stream).read().reason, "receiving failed");
}

TEST(EventReaderTest, LimitIsItsOwnAndZeroMeansNone) {
    for (const auto& [limit, result] : {std::pair{17u, "broken: length 18 is above the limit of 17\n"},
                                        {18u, "event 10 of 18\n"},
                                        {0u, "event 10 of 18\n"}}) {
        std::istringstream stream(kMessage);
        EventReader reader(stream);
        reader.setMaxLength(limit);
        EXPECT_EQ(told(reader.read()), result);
    }
}

TEST(EventReaderTest, BrokenAndTimedOutWaitsInsideAnEventLoseNothing) {
    for (const std::string& wire : {kMessage, kUnknown, kPlain})
        for (std::size_t first = 0; first < wire.size(); ++first) {
            ScriptedReceiver receiver;
            receiver.stalls = true;
            receiver.bytes = wire.substr(0, first);
            EventReader reader(&receiver);
            EXPECT_EQ(told(reader.read(0)), "timed out\n");
            receiver.breakWait();
            EXPECT_EQ(told(reader.read()), "woken\n");
            receiver.bytes += wire.substr(first) + kMessage;
            const auto result = reader.read(0);
            EXPECT_EQ(result.status, wire == kUnknown ? Status::Unknown : Status::Event) << first;
            EXPECT_EQ(receiver.bytes, kMessage) << "nothing beyond the event is read";
        }
}

TEST(EventReaderTest, FindsTheNextEventAfterGarbageAndCountsIt) {
    const std::string all[] = {
        "noise",
        "V",
        "VX0",
        "VVXVX0V",
        "VX01",
        "VX01VX01",
        "VX01VX0",
        std::string(10000, 'V'),
        bytesOf("56583031 0000000b 000a 0000"),
        bytesOf("56583031 56583031 00000001"),
        kMessage.substr(0, 4) + bytesOf("ffffffff") + kMessage.substr(8),
        kMessage.substr(1),
    };
    for (const std::string& garbage : all) {
        const std::string lost = ", lost " + std::to_string(garbage.size()) + "\n";
        const std::string end = "closed, lost " + std::to_string(garbage.size() + 12) + "\nclosed\n";
        expectReads(garbage + kMessage + kMessage + garbage + kUnknown + garbage + "------------",
                    "event 10 of 18" + lost + "event 10 of 18\nunknown 7 of 16" + lost + end, true);
    }
}

TEST(EventReaderTest, MemoryFollowsTheBytesThatArrive) {
    for (const char* type : {"000a", "0007"}) {
        std::istringstream stream(bytesOf("56583031 10000000") + bytesOf(type) + bytesOf("0000") +
                                  std::string(10000, 'x'));
        const LargestAllocation largest;
        EXPECT_EQ(EventReader(stream).read().reason, "the peer closed inside an event");
        EXPECT_LT(largest.bytes(), 40000u);
    }
}

}  // namespace
