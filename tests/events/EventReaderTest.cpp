#include <tests/events/Wire.h>

#include <Varnex/events/EventReader.h>

using namespace Varnex;

namespace {

/// What one read gave, in words.
std::string told(const EventReader::Result& r) {
    const char* const names[] = {"event", "unknown", "closed", "broken", "woken", "timed out"};
    std::string text = names[static_cast<int>(r.status)];
    if (r.typeID != -1) text += " " + std::to_string(r.typeID) + " of " + std::to_string(r.length);
    if (r.lost > 0) text += ", lost " + std::to_string(r.lost);
    if (!r.reason.empty()) text += ": " + r.reason;
    return text + ((r.status == EventReader::Status::Event) == (r.event != nullptr) ? "\n" : " without its event\n");
}

/// What reading gives up to the end, and once more.
std::string toldToTheEnd(EventReader reader, bool resynchronise) {
    reader.setResynchronise(resynchronise);
    for (std::string all;;) {
        const EventReader::Result result = reader.read();
        all += told(result);
        if (result.status > EventReader::Status::Unknown) return all + told(reader.read());
    }
}

/// Expects the same from a stream and in pieces of many sizes, without a printed line.
void expectReads(const std::string& bytes, const std::string& expected, bool resynchronise = false) {
    const CapturedDiagnostics lines;
    std::istringstream stream(bytes);
    EXPECT_EQ(toldToTheEnd(EventReader(stream), resynchronise), expected);
    for (const std::size_t piece : {1, 2, 3, 5, 11, 13, 4096, 1000000}) {
        ScriptedReceiver receiver;
        receiver.bytes = bytes;
        receiver.pieceSizes = {piece};
        EXPECT_EQ(toldToTheEnd(EventReader(&receiver), resynchronise), expected) << "pieces of " << piece;
    }
    EXPECT_EQ(lines.errors() + lines.output(), "");
}

TEST(EventReaderTest, TellsEventsUnknownOnesAndTheEndApart) {
    const std::string large = bytesOf("56583031 00011170 7fff 0000") + std::string(69988, 'x');
    expectReads(kMessage + kUnknown + kPlain + large + kUnmade + kPoor + kMessage,
                "event 10 of 18\nunknown 7 of 16\nevent 0 of 12\nunknown 32767 of 70000\nunknown 1001 of 14\n"
                "unknown 1002 of 14\nevent 10 of 18\nclosed\nclosed\n");
    expectReads("", "closed\nclosed\n");
}

TEST(EventReaderTest, BrokenStreamSaysWhyAndStaysBroken) {
    const std::tuple<std::string, std::string, bool> all[] = {
        {"not an event" + kMessage, ": wrong magic", false},
        {bytesOf("56583031 0000000b 000a 0000") + kMessage, ": length 11 is below that of a header", false},
        {bytesOf("56583031 10000001 000a 0000"), ": length 268435457 is above the limit of 268435456", false},
        {bytesOf("56583031 ffffffff 0007 0000"), ": length 4294967295 is above the limit of 268435456", false},
        {"V", ": the peer closed inside a header", false},
        {kMessage.substr(0, 11), ": the peer closed inside a header", false},
        {kMessage.substr(0, 12), ": the peer closed inside an event", false},
        {kMessage.substr(0, 17), ": the peer closed inside an event", false},
        {kUnknown.substr(0, 13), ": the peer closed inside an event", false},
        {"noise" + kMessage.substr(0, 17), ", lost 5: the peer closed inside an event", true},
        {"noise and noise VX0", ", lost 16: the peer closed inside a header", true},
    };
    for (const auto& [bytes, told, resynchronise] : all) {
        const std::string again = "\nbroken" + told.substr(told.find(':')) + "\n";
        expectReads(kMessage + bytes, "event 10 of 18\nbroken" + told + again, resynchronise);
    }
}

TEST(EventReaderTest, FailingSourceBreaksIt) {
    for (int ScriptedReceiver::*const failing : {&ScriptedReceiver::failWait, &ScriptedReceiver::failReceive}) {
        ScriptedReceiver receiver;
        receiver.bytes = kMessage;
        receiver.*failing = 1;
        EXPECT_EQ(toldToTheEnd(EventReader(&receiver), false), "broken: receiving failed\nbroken: receiving failed\n");
    }
    std::istringstream stream;
    stream.setstate(std::ios::badbit);
    EXPECT_EQ(EventReader(stream).read().reason, "receiving failed");
}

TEST(EventReaderTest, LimitIsItsOwnAndZeroMeansNone) {
    for (const unsigned int limit : {17u, 18u, 0u}) {
        std::istringstream stream(kMessage);
        EventReader reader(stream);
        reader.setMaxLength(limit);
        EXPECT_EQ(told(reader.read()),
                  limit == 17 ? "broken: length 18 is above the limit of 17\n" : "event 10 of 18\n");
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
            EXPECT_EQ(reader.read(0).length, wire.size());
            EXPECT_EQ(receiver.bytes, kMessage) << "nothing beyond the event is read";
        }
}

TEST(EventReaderTest, TimeLimitHoldsAlsoWhileBytesKeepComing) {
    struct : ScriptedReceiver {
        using ScriptedReceiver::waitForData;
        int waitForData(int ms) override {
            bytes = "no event at all";
            return ms <= 5 && ++waits < 10'000'000 ? WaitData : WaitFailed;
        }
    } endless;
    EventReader reader(&endless);
    reader.setResynchronise(true);
    for (const int ms : {0, 5}) EXPECT_EQ(told(reader.read(ms)), "timed out\n");
}

TEST(EventReaderTest, FindsTheNextEventAfterGarbageAndCountsIt) {
    const std::string all[] = {"noise",
                               "VX0",
                               "VVXVX0V",
                               "VX01VX0",
                               std::string(10000, 'V'),
                               bytesOf("56583031 0000000b 000a 0000"),
                               bytesOf("56583031 56583031 00000001"),
                               bytesOf("56583031 ffffffff 000a 0000"),
                               kMessage.substr(1)};
    for (const std::string& garbage : all) {
        const std::string lost = ", lost " + std::to_string(garbage.size()) + "\n";
        expectReads(garbage + kMessage + kMessage + garbage + kUnknown + garbage + "------------",
                    "event 10 of 18" + lost + "event 10 of 18\nunknown 7 of 16" + lost + "closed, lost " +
                        std::to_string(garbage.size() + 12) + "\nclosed\n",
                    true);
    }
}

TEST(EventReaderTest, LendsTheBytesOfEachEventAndOnRequestOfUnknownOnes) {
    const std::string large = bytesOf("56583031 00200000 7fff 0000") + std::string((2 << 20) - 12, 'x');
    for (const bool keeps : {false, true}) {
        std::istringstream stream(kMessage + kUnknown + large + kUnmade + kPlain + "V");
        EventReader reader(stream);
        reader.setKeepUnknown(keeps);
        for (const std::string& event : {kMessage, kUnknown, large, kUnmade, kPlain, std::string()}) {
            EXPECT_EQ(reader.read().length, event.size());
            EXPECT_TRUE(reader.getBytes() == (keeps || (event != kUnknown && event != large) ? event : ""));
        }
    }
}

TEST(EventReaderTest, MemoryFollowsTheBytesThatArrive) {
    for (const auto& [type, keeps] : {std::pair("000a", false), {"0007", false}, {"0007", true}}) {
        std::istringstream stream(bytesOf("56583031 10000000") + bytesOf(type) + std::string(10000, 'x'));
        EventReader reader(stream);
        reader.setKeepUnknown(keeps);
        largestAllocation = 0;
        EXPECT_EQ(reader.read().reason, "the peer closed inside an event");
        EXPECT_LT(largestAllocation, 40000u);
    }
}

}  // namespace
