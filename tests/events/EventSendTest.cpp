#include <tests/events/Wire.h>

#include <Varnex/events/EventBatch.h>
#include <Varnex/events/MessageEvent.h>

#include <climits>
#include <fstream>

#include <unistd.h>

using namespace Varnex;

namespace {

const std::string kNotWritten =
    "ERROR: No valid data in Event::write(), did you forget to call first ParentClass::addFields() then the addFields "
    "method of your Event specialisation?\n";
const std::string kUnknownType =
    "ERROR: Unknown type in Event::addFields() - did you forget to register your event type ?\n";

const ProbeEvent::Action kAddSeven = [](ProbeEvent& e) { e.addField(7); };

TEST(EventSendTest, SucceedsOnlyWhenOneCallTookAllOfTheEventOrBatch) {
    const std::tuple<int, int, bool> all[] = {{0, -1, true}, {1, -1, false}, {0, 17, false}, {0, 18, true}};
    for (const auto& [failSend, takeAtMost, good] : all) {
        ScriptedSender single, batched;
        single.failSend = batched.failSend = failSend;
        single.takeAtMost = batched.takeAtMost = takeAtMost;
        MessageEvent event(3, "hi");
        EventBatch batch;
        EXPECT_TRUE(batch.send(&batched) && batch.add(event)) << "an empty one needs no call";
        EXPECT_EQ(event.send(&single), good);
        EXPECT_EQ(batch.send(&batched), good);
        EXPECT_EQ(batch.getSize(), good ? 0 : 18);
        EXPECT_EQ(single.sendCalls * 10 + batched.sendCalls, 11);
        EXPECT_EQ(single.sent(), failSend == 1 ? "" : kMessage.substr(0, good ? 18 : 17));
        EXPECT_EQ(batched.sent(), single.sent());
    }
}

TEST(EventSendTest, WithoutParentFieldsGoesOutUnpatchedAndEmptyNotAtAll) {
    ProbeEvent headless(kAddSeven), nothing, typeless(kAddSeven);
    headless.writesHeader = nothing.writesHeader = typeless.typed = false;
    typeless.setTag(0x0102);
    const std::tuple<ProbeEvent&, std::string, std::string, std::string> all[] = {
        {headless, bytesOf("00000007"), kNotWritten, ""},
        {nothing, "", kNotWritten, ""},
        {typeless, bytesOf("56583031 00000010 0000 0102 00000007"), "", kUnknownType}};
    for (const auto& [event, bytes, output, errors] : all) {
        const CapturedDiagnostics lines;
        ScriptedSender sender;
        EXPECT_EQ(event.send(&sender), !bytes.empty());
        EXPECT_EQ(sender.sendCalls, bytes.empty() ? 0 : 1);
        EXPECT_EQ(sender.sent(), bytes);
        EXPECT_EQ(lines.output(), output);
        EXPECT_EQ(lines.errors(), errors);
    }
}

std::string dumpFile, dumpLines, dumpContent;

void seeDump(DiagnosticStream, std::string_view text) {
    dumpLines += text;
    if (text == "done\n") dumpContent = (std::ostringstream() << std::ifstream(dumpFile).rdbuf()).str();
}

TEST(EventSendTest, DumpsBytesOrDecimalNumbersAndTellsSoWhenTheFileIsWhole) {
    dumpFile = testing::TempDir() + "EventDump." + std::to_string(::getpid());
    const DiagnosticSink before = setDiagnosticSink(&seeDump);
    MessageEvent event(3, "\xc8\x7f");
    event.dump(dumpFile.c_str(), true);
    EXPECT_EQ(dumpContent, bytesOf("56583031 00000012 000a 0000 0003 0002 c87f"));
    event.dump(dumpFile.c_str(), false);
    EXPECT_EQ(dumpContent, "\n 86  88  48  49   0   0   0  18 \n  0  10   0   0   0   3   0   2 \n4294967240 127 \n");
    Event().dump("/no such folder/dump", false);
    setDiagnosticSink(before);
    ::unlink(dumpFile.c_str());
    const std::string to = "Dump 18 bytes to " + dumpFile;
    EXPECT_EQ(dumpLines, to + "(bin) ... done\n" + to + "(ascii) ... done\n" + kUnknownType +
                             "Dump 12 bytes to /no such folder/dump(ascii) ... failed\n");
}

TEST(EventBatchTest, WhatDoesNotFitLeavesTheBatchAsItWas) {
    const CapturedDiagnostics lines;
    EventBatch batch;
    batch.setMaxBytes(40);
    MessageEvent message(3, "hi"), longer(3, "hi there"), large(3, std::string(30000, 'x').c_str());
    ProbeEvent headless(kAddSeven);
    headless.writesHeader = false;
    ProbeEvent tooLarge([](ProbeEvent& e) { e.addData("x", 1L << 31), e.addData("x", LONG_MAX / 2), e.addField(1); });
    for (Event* event : std::initializer_list<Event*>{&message, &longer, &large, &headless, &tooLarge, &message})
        EXPECT_EQ(batch.add(*event), event == &message);
    EXPECT_EQ(lines.output(), kNotWritten);
    EXPECT_EQ(std::string(batch.getData(), 36), kMessage + kMessage);
    batch.setMaxBytes(0);
    EXPECT_TRUE(batch.add(large));
    EXPECT_EQ(batch.getCount() * 100000 + batch.getSize(), 330052);
    EXPECT_EQ(lines.errors(), "ERROR: Event too large\n") << "growing prints nothing";
    EXPECT_TRUE(std::string(batch.getData() + 36, 30016) == wireOf(large));
    batch.clear();
    EXPECT_EQ(batch.getSize() + batch.getCount(), 0);
    EXPECT_EQ(wireOf(tooLarge), "");
}

}  // namespace
