#include <tests/events/ProbeEvent.h>
#include <tests/support/CapturedDiagnostics.h>
#include <tests/support/Scripted.h>

#include <Varnex/events/EventBatch.h>
#include <Varnex/events/MessageEvent.h>
#include <Varnex/events/StatusEvent.h>

#include <gtest/gtest.h>

#include <climits>
#include <fstream>

using namespace Varnex;

namespace {

const std::string kNotWritten =
    "ERROR: No valid data in Event::write(), did you forget to call first ParentClass::addFields() then the addFields "
    "method of your Event specialisation?\n";
const std::string kUnknownType =
    "ERROR: Unknown type in Event::addFields() - did you forget to register your event type ?\n";

TEST(EventSendTest, SucceedsOnlyWhenOneCallTookTheWholeEvent) {
    struct Case {
        int failSend, takeAtMost;
        bool sent;
    };
    for (const auto& [failSend, takeAtMost, sent] :
         {Case{0, -1, true}, {1, -1, false}, {0, 17, false}, {0, 18, true}}) {
        ScriptedSender sender;
        sender.failSend = failSend;
        sender.takeAtMost = takeAtMost;
        EXPECT_EQ(MessageEvent(3, "hi").send(&sender), sent);
        EXPECT_EQ(sender.sendCalls, 1);
        EXPECT_EQ(sender.sent(), kMessage.substr(0, sender.sent().size()));
    }
}

TEST(EventSendTest, KeepsNoBuffer) {
    ScriptedSender sender;
    ProbeEvent event;
    event.send(&sender);
    EXPECT_EQ(event._buffer, nullptr);
    EXPECT_EQ(hexOf(wireOf(event)), hexOf(sender.sent()));
    EXPECT_EQ(event._buffer, nullptr);
}

TEST(EventSendTest, WithoutParentFieldsGoesOutUnpatchedAndEmptyNotAtAll) {
    const CapturedDiagnostics lines;
    ScriptedSender sender;
    ProbeEvent headless([](ProbeEvent& e) { e.addField(std::string("fields")); });
    headless.writesHeader = false;
    EXPECT_TRUE(headless.send(&sender));
    EXPECT_EQ(hexOf(sender.sent()), digits("0006 6669656c6473"));
    EXPECT_EQ(lines.output(), kNotWritten);
    ProbeEvent nothing;
    nothing.writesHeader = false;
    EXPECT_FALSE(nothing.send(&sender));
    EXPECT_EQ(sender.sendCalls, 1);
    EXPECT_EQ(wireOf(nothing), "");
    EXPECT_EQ(lines.errors(), "");
}

TEST(EventSendTest, WithoutTypeGoesOutAsTypeZero) {
    const CapturedDiagnostics lines;
    ProbeEvent event([](ProbeEvent& e) { e.addField(true); });
    event.typed = false;
    event.setTag(0x0102);
    EXPECT_EQ(hexOf(wireOf(event)), digits("56583031 0000000e 0000 0102 0001"));
    EXPECT_EQ(lines.errors(), kUnknownType);
}

TEST(EventSendTest, TooLargeEventIsRefusedWithOneLine) {
    const CapturedDiagnostics lines;
    ScriptedSender sender;
    ProbeEvent event([](ProbeEvent& e) {
        e.addData("never read", 1L << 31);
        e.addData("never read", LONG_MAX / 2);
        e.addField(1);
    });
    EXPECT_FALSE(event.send(&sender));
    EventBatch batch;
    EXPECT_FALSE(batch.add(event));
    EXPECT_EQ(wireOf(event), "");
    EXPECT_EQ(sender.sendCalls + batch.getSize(), 0);
    const std::string line = "ERROR: Event too large\n";
    EXPECT_EQ(lines.errors(), line + line + line);
}

std::string contentOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(EventSendTest, DumpsBytesOrDecimalNumbersAndTellsSo) {
    const std::string file = testing::TempDir() + "EventDump." + std::to_string(::getpid());
    const CapturedDiagnostics lines;
    MessageEvent event(3, "\xc8\x7f");
    event.dump(file.c_str(), true);
    EXPECT_EQ(hexOf(contentOf(file)), digits("56583031 00000012 000a 0000 0003 0002 c87f"));
    event.dump(file.c_str(), false);
    EXPECT_EQ(contentOf(file),
              "\n 86  88  48  49   0   0   0  18 \n  0  10   0   0   0   3   0   2 \n4294967240 127 \n");
    EXPECT_EQ(lines.output(),
              "Dump 18 bytes to " + file + "(bin) ... done\nDump 18 bytes to " + file + "(ascii) ... done\n");
    std::remove(file.c_str());
}

TEST(EventSendTest, DumpSerialisesAlsoWhenTheFileCannotBeOpened) {
    const CapturedDiagnostics lines;
    Event().dump("/no such folder/dump", false);
    EXPECT_EQ(lines.output(), "Dump 12 bytes to /no such folder/dump(ascii) ... failed\n");
    EXPECT_EQ(lines.errors(), kUnknownType);
}

}  // namespace
