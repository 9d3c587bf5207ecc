#include <tests/events/ProbeEvent.h>

#include <Varnex/events/MessageEvent.h>

#include <gtest/gtest.h>

#include <map>

using namespace Varnex;

namespace {

/// Looks at the map, which subclasses see.
struct OpenType : EventType {
    using EventType::EventType;
    static bool mapExists() { return _typeMap != nullptr; }
};

TEST(EventTypeTest, TheTwelveAreRegisteredAndListedById) {
    const std::pair<short, std::string> expected[] = {
        {0, "Event"},          {5, "ServerInfoEvent"}, {6, "ServerInfoQueryEvent"},      {8, "HelloEvent"},
        {10, "MessageEvent"},  {20, "HandleEvent"},    {21, "TranslationEvent"},         {22, "TransformEvent"},
        {23, "RotationEvent"}, {24, "StatusEvent"},    {25, "TranslationRotationEvent"}, {26, "TrackedPointsEvent"}};
    const auto types = EventType::getTypes();
    ASSERT_GE(types.size(), std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        const auto& [id, name] = expected[i];
        EXPECT_EQ(types[i]->id, id);
        EXPECT_EQ(types[i]->name, "Varnex::" + name);
        EXPECT_EQ(EventType::findType(id), types[i]);
        const std::unique_ptr<Event> event(types[i]->create());
        EXPECT_EQ(event->type(), types[i]) << name;
    }
    for (const short id : std::initializer_list<short>{1, 7, 9, 19, 27, -1, -32768, 32767})
        EXPECT_EQ(EventType::findType(id), nullptr) << id;
}

TEST(EventTypeTest, NameIsCopiedAndEmptyOrNullGivesNull) {
    std::string name = "Passing";
    const EventType type(name.c_str(), -2, &Event::create), empty("", -3, nullptr), null(nullptr, -4, nullptr);
    name = "changed";
    EXPECT_STREQ(EventType::findType(-2)->name, "Passing");
    EXPECT_EQ(empty.name, nullptr);
    EXPECT_EQ(null.name, nullptr);
    EXPECT_EQ(EventType::findType(-4), &null);
}

// A duplicate takes the first registration along when it goes, so these run in processes of their own.
class EventTypeDeathTest : public testing::Test {
protected:
    EventTypeDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    static void leave(bool good) { std::_Exit(good ? 0 : 1); }
};

TEST_F(EventTypeDeathTest, DuplicateIsReportedStaysOutAndUnregistersTheFirst) {
    const auto child = [] {
        bool good;
        {
            const EventType duplicate("Mine", 10, &Event::create), nameless("", -3, nullptr),
                second(nullptr, -3, nullptr);
            good = EventType::findType(10) == &MessageEvent::_type && EventType::findType(-3) == &nameless;
        }
        leave(good && EventType::findType(10) == nullptr);
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0),
                "^ERROR: There is alrady a EventType with the ID 10 registered \\(\"Varnex::MessageEvent\" - "
                "\"Mine\"\\)!\nERROR: There is alrady a EventType with the ID -3 registered \\(\"\" - \"\"\\)!\n$");
}

TEST_F(EventTypeDeathTest, MapGoesWithTheLastTypeAndComesAgain) {
    const auto child = [] {
        for (const EventType* type : EventType::getTypes()) EventType("", type->id, nullptr);
        const bool gone = !OpenType::mapExists() && EventType::findType(10) == nullptr && EventType::getTypes().empty();
        const EventType again("Again", 10, nullptr);
        leave(gone && OpenType::mapExists() && EventType::findType(10) == &again);
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0), "");
}

}  // namespace
