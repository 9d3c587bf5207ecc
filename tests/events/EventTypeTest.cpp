#include <tests/events/Wire.h>

#include <Varnex/events/MessageEvent.h>

using namespace Varnex;

namespace {

TEST(EventTypeTest, TheTwelveAreRegisteredAndListedById) {
    const std::pair<short, std::string> all[] = {
        {0, "Event"},          {5, "ServerInfoEvent"}, {6, "ServerInfoQueryEvent"},      {8, "HelloEvent"},
        {10, "MessageEvent"},  {20, "HandleEvent"},    {21, "TranslationEvent"},         {22, "TransformEvent"},
        {23, "RotationEvent"}, {24, "StatusEvent"},    {25, "TranslationRotationEvent"}, {26, "TrackedPointsEvent"}};
    const auto types = EventType::getTypes();
    for (auto listed = types.begin(); const auto& [id, name] : all) {
        ASSERT_EQ(EventType::findType(id), *listed++);
        EXPECT_EQ(EventType::findType(id)->name, "Varnex::" + name);
        EXPECT_EQ(std::unique_ptr<Event>(EventType::findType(id)->create())->type(), EventType::findType(id));
    }
    for (const short id : std::initializer_list<short>{1, 7, 9, 19, 27, -1, -32768, 32767})
        EXPECT_EQ(EventType::findType(id), nullptr) << id;
}

struct OpenType : EventType {
    using EventType::_typeMap;
};

/// The step that went wrong; it spoils the types, so it has a process of its own.
int registerAndGo() {
    {
        std::string name = "Mine";
        const EventType duplicate(name.c_str(), 10, nullptr), nameless("", -3, nullptr), second(nullptr, -3, nullptr);
        name = "changed";
        if (EventType::findType(10) != &MessageEvent::_type || EventType::findType(-3) != &nameless) return 1;
        if (std::string(duplicate.name) != "Mine" || nameless.name != nullptr || second.name != nullptr) return 2;
    }
    if (EventType::findType(10) != nullptr) return 3;  // a duplicate takes the first one along
    for (const EventType* type : EventType::getTypes()) EventType("", type->id, nullptr);
    if (OpenType::_typeMap != nullptr || EventType::findType(20) != nullptr || !EventType::getTypes().empty()) return 4;
    const EventType again("Again", 10, nullptr);
    return EventType::findType(10) == &again ? 0 : 5;
}

TEST(EventTypeDeathTest, DuplicateIsReportedAndUnregistersTheFirstAndMapGoesWithTheLast) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::_Exit(registerAndGo()), testing::ExitedWithCode(0),
                "^ERROR: There is alrady a EventType with the ID 10 registered \\(\"Varnex::MessageEvent\" - "
                "\"Mine\"\\)!\nERROR: There is alrady a EventType with the ID -3 registered \\(\"\" - \"\"\\)!\n");
}

}  // namespace
