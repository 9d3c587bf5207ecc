#pragma once

#include <Varnex/events/TrackedPointsEvent.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace VarnexTool {

/// What a field holds, which also says how it is written and which values it takes.
enum class Kind { Flag, Int16, UInt16, Int32, Bits32, UInt64, Text, Floats, Points };

using Points = std::vector<Varnex::TrackedPointsEvent::TrackedPoint>;

/// The value of a field: numbers of at most 32 bits are signed here, only `UInt64` is not.
using Value = std::variant<bool, std::int64_t, std::uint64_t, std::string, std::vector<float>, Points>;

/// One field of an event class.
struct Field {
    std::string name;
    Kind kind;
    std::size_t count;  ///< values of a `Floats` field
    Value (*get)(const Varnex::Event& event);
    void (*set)(Varnex::Event& event, const Value& value);  ///< null: the sending machine fills it in

    /// The kind for a reader, such as "int16" or "float[3]".
    [[nodiscard]] std::string typeName() const;
    /// The command-line option, such as "--host-address" for `hostAddress`.
    [[nodiscard]] std::string optionName() const;
};

/// One registered event class with its fields in the order of the wire. Lives as long as the process.
struct Description {
    const Varnex::EventType* type;
    std::string name;  ///< without namespace
    std::vector<Field> fields;

    /// A fresh event to fill and send.
    [[nodiscard]] std::unique_ptr<Varnex::Event> makeEvent() const;
};

/// All registered types by ascending ID. A type without an entry of its own has no fields here. Any thread.
[[nodiscard]] const std::vector<Description>& eventTable();

/// The one of this event; its type is registered.
[[nodiscard]] const Description& describe(const Varnex::Event& event);

/// The spellings a user may choose: "Message", "MessageEvent", "Varnex::MessageEvent" and "10".
[[nodiscard]] std::vector<std::string> spellings(const Description& description);

}  // namespace VarnexTool
