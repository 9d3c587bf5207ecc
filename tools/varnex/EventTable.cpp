#include "EventTable.h"

#include <Varnex/events/HelloEvent.h>
#include <Varnex/events/MessageEvent.h>
#include <Varnex/events/RotationEvent.h>
#include <Varnex/events/ServerInfoEvent.h>
#include <Varnex/events/ServerInfoQueryEvent.h>
#include <Varnex/events/StatusEvent.h>
#include <Varnex/events/TranslationEvent.h>
#include <Varnex/events/TranslationRotationEvent.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <type_traits>

namespace VarnexTool {

using namespace Varnex;

namespace {

template <class Getter>
struct GetterTraits;
template <class C, class R>
struct GetterTraits<R (C::*)() const> {
    using Class = C;
    using Result = std::remove_cvref_t<R>;
};
template <auto Get>
using ClassOf = typename GetterTraits<decltype(Get)>::Class;
template <auto Get>
using ResultOf = typename GetterTraits<decltype(Get)>::Result;

template <class Setter>
struct SetterTraits;
template <class C, class A>
struct SetterTraits<void (C::*)(A)> {
    using Argument = A;
};

template <class T>
constexpr Kind kindOf() {
    if constexpr (std::is_same_v<T, bool>) return Kind::Flag;
    if constexpr (std::is_same_v<T, short>) return Kind::Int16;
    if constexpr (std::is_same_v<T, unsigned short>) return Kind::UInt16;
    if constexpr (std::is_same_v<T, int>) return Kind::Int32;
    if constexpr (std::is_same_v<T, long>) return Kind::Bits32;
    if constexpr (std::is_same_v<T, unsigned long long>) return Kind::UInt64;
    if constexpr (std::is_same_v<T, std::string>) return Kind::Text;
    if constexpr (std::is_same_v<T, Points>) return Kind::Points;
}

template <class T>
Value toValue(const T& value) {
    if constexpr (std::is_same_v<T, unsigned long long>)
        return static_cast<std::uint64_t>(value);
    else if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool>)
        return static_cast<std::int64_t>(value);
    else
        return value;
}

template <class Argument>
Argument toArgument(const Value& value) {
    using T = std::remove_cvref_t<Argument>;
    if constexpr (std::is_same_v<T, const char*>)
        return std::get<std::string>(value).c_str();
    else if constexpr (std::is_same_v<T, unsigned long long>)
        return std::get<std::uint64_t>(value);
    else if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool>)
        return static_cast<T>(std::get<std::int64_t>(value));
    else
        return std::get<T>(value);
}

template <auto Get>
Value getValue(const Event& event) {
    return toValue((static_cast<const ClassOf<Get>&>(event).*Get)());
}

template <auto Get>
Field readOnly(const char* name) {
    return {name, kindOf<ResultOf<Get>>(), 1, &getValue<Get>, nullptr};
}

template <auto Get, auto Set>
Field field(const char* name) {
    Field result = readOnly<Get>(name);
    result.set = [](Event& event, const Value& value) {
        using Argument = typename SetterTraits<decltype(Set)>::Argument;
        (static_cast<ClassOf<Get>&>(event).*Set)(toArgument<Argument>(value));
    };
    return result;
}

/// `Count` values behind a pointer.
template <std::size_t Count, auto Get, void (ClassOf<Get>::*Set)(const float*)>
Field floats(const char* name) {
    return {name, Kind::Floats, Count,
            [](const Event& event) -> Value {
                const float* const first = (static_cast<const ClassOf<Get>&>(event).*Get)();
                return std::vector<float>(first, first + Count);
            },
            [](Event& event, const Value& value) {
                (static_cast<ClassOf<Get>&>(event).*Set)(std::get<std::vector<float>>(value).data());
            }};
}

using Fields = std::vector<Field>;

Fields operator+(Fields inherited, const Fields& own) {
    inherited.insert(inherited.end(), own.begin(), own.end());
    return inherited;
}

// The fields of each class, parents first, by type ID.
using FieldsByType = std::map<short, Fields>;

FieldsByType messageFields() {
    return {
        {ServerInfoEvent::_type.id,
         {field<&ServerInfoEvent::getStatus, &ServerInfoEvent::setStatus>("status"),
          field<&ServerInfoEvent::getId, &ServerInfoEvent::setId>("id"),
          field<&ServerInfoEvent::getPort, &ServerInfoEvent::setPort>("port"),
          field<&ServerInfoEvent::getMask, &ServerInfoEvent::setMask>("mask"),
          field<&ServerInfoEvent::getHostAddress, &ServerInfoEvent::setHostAddress>("hostAddress"),
          field<&ServerInfoEvent::getHostName, &ServerInfoEvent::setHostName>("hostName")}},
        {ServerInfoQueryEvent::_type.id,
         {field<&ServerInfoQueryEvent::getMask, &ServerInfoQueryEvent::setMask>("mask"),
          field<&ServerInfoQueryEvent::getId, &ServerInfoQueryEvent::setId>("id")}},
        {HelloEvent::_type.id,
         {field<&HelloEvent::getName1, &HelloEvent::setName1>("name1"),
          field<&HelloEvent::getName2, &HelloEvent::setName2>("name2"),
          field<&HelloEvent::getNumber1, &HelloEvent::setNumber1>("number1"),
          field<&HelloEvent::getNumber2, &HelloEvent::setNumber2>("number2"),
          readOnly<&HelloEvent::getSysText1>("sysText1"), readOnly<&HelloEvent::getSysText2>("sysText2"),
          readOnly<&HelloEvent::getSysText3>("sysText3")}},
        {MessageEvent::_type.id,
         {field<&MessageEvent::getCode, &MessageEvent::setCode>("code"),
          field<&MessageEvent::getText, &MessageEvent::setMessageText>("text")}},
    };
}

FieldsByType trackingFields() {
    const Fields handle{field<&HandleEvent::getHandle, &HandleEvent::setHandle>("handle"),
                        field<&HandleEvent::getValue, &HandleEvent::setValue>("value")};
    const Fields transform = handle + Fields{field<&TransformEvent::getFlag1, &TransformEvent::setFlag1>("flag1"),
                                             field<&TransformEvent::getFlag2, &TransformEvent::setFlag2>("flag2")};
    using Both = TranslationRotationEvent;
    return {
        {HandleEvent::_type.id, handle},
        {TransformEvent::_type.id, transform},
        {TranslationEvent::_type.id,
         transform + Fields{floats<3, &TranslationEvent::getTranslation, &TranslationEvent::set>("translation")}},
        {RotationEvent::_type.id,
         transform + Fields{floats<4, &RotationEvent::getRotation, &RotationEvent::set>("rotation")}},
        {StatusEvent::_type.id, handle + Fields{field<&StatusEvent::getStatus, &StatusEvent::setStatus>("status")}},
        {TranslationRotationEvent::_type.id,
         transform + Fields{floats<3, &Both::getTranslation, &Both::setTranslation>("translation"),
                            floats<4, &Both::getRotation, &Both::setRotation>("rotation")}},
        {TrackedPointsEvent::_type.id,
         handle + Fields{field<&TrackedPointsEvent::getPoints, &TrackedPointsEvent::set>("points")}},
    };
}

std::string withoutNamespace(const char* name) {
    const std::string full = name == nullptr ? "?" : name;
    const std::size_t colon = full.rfind(':');
    return colon == std::string::npos ? full : full.substr(colon + 1);
}

std::vector<Description> makeTable() {
    std::vector<Description> table;
    FieldsByType fields = messageFields();
    fields.merge(trackingFields());
    for (const EventType* type : EventType::getTypes())
        table.push_back({type, withoutNamespace(type->name), std::move(fields[type->id])});
    return table;
}

}  // namespace

std::string Field::typeName() const {
    switch (kind) {
        case Kind::Flag:
            return "bool";
        case Kind::Int16:
            return "int16";
        case Kind::UInt16:
            return "uint16";
        case Kind::Int32:
        case Kind::Bits32:
            return "int32";
        case Kind::UInt64:
            return "uint64";
        case Kind::Text:
            return "string";
        case Kind::Floats:
            return "float[" + std::to_string(count) + "]";
        case Kind::Points:
            return "point[]";
    }
    return "?";
}

std::string Field::optionName() const {
    if (kind == Kind::Points) return "--point";  // one each time
    std::string option = "--";
    for (const char c : name) {
        const auto letter = static_cast<unsigned char>(c);
        if (std::isupper(letter) != 0) option += '-';
        option += static_cast<char>(std::tolower(letter));
    }
    return option;
}

std::unique_ptr<Event> Description::makeEvent() const {
    // Its factory is for receiving and leaves the texts about this machine empty.
    if (type == &HelloEvent::_type) return std::make_unique<HelloEvent>("", "", short{0}, short{0});
    return std::unique_ptr<Event>(type->create());
}

const std::vector<Description>& eventTable() {
    static const std::vector<Description> table = makeTable();
    return table;
}

const Description& describe(const Event& event) {
    const short id = event.type()->id;
    const auto& table = eventTable();
    return *std::lower_bound(table.begin(), table.end(), id,
                             [](const Description& entry, short wanted) { return entry.type->id < wanted; });
}

std::vector<std::string> spellings(const Description& description) {
    constexpr std::string_view kSuffix = "Event";
    std::vector<std::string> all{description.name, std::to_string(description.type->id)};
    if (description.type->name != nullptr) all.emplace_back(description.type->name);
    if (description.name.ends_with(kSuffix) && description.name.size() > kSuffix.size())
        all.push_back(description.name.substr(0, description.name.size() - kSuffix.size()));
    return all;
}

}  // namespace VarnexTool
