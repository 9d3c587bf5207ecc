#include <Varnex/events/EventType.h>

#include <Varnex/events/HelloEvent.h>
#include <Varnex/events/MessageEvent.h>
#include <Varnex/events/RotationEvent.h>
#include <Varnex/events/ServerInfoEvent.h>
#include <Varnex/events/ServerInfoQueryEvent.h>
#include <Varnex/events/StatusEvent.h>
#include <Varnex/events/TrackedPointsEvent.h>
#include <Varnex/events/TranslationEvent.h>
#include <Varnex/events/TranslationRotationEvent.h>
#include <Varnex/transport/PrintLine.h>

#include <cstring>
#include <string>

namespace Varnex {

constinit std::map<short, EventType*>* EventType::_typeMap = nullptr;

// All of them here: in one source file they register in this order, and a static library that is asked for the look-up
// brings them along.
EventType Event::_type("Varnex::Event", 0, &Event::create);
EventType HandleEvent::_type("Varnex::HandleEvent", 20, &HandleEvent::create);
EventType MessageEvent::_type("Varnex::MessageEvent", 10, &MessageEvent::create);
EventType RotationEvent::_type("Varnex::RotationEvent", 23, &RotationEvent::create);
EventType ServerInfoEvent::_type("Varnex::ServerInfoEvent", 5, &ServerInfoEvent::create);
EventType ServerInfoQueryEvent::_type("Varnex::ServerInfoQueryEvent", 6, &ServerInfoQueryEvent::create);
EventType TransformEvent::_type("Varnex::TransformEvent", 22, &TransformEvent::create);
EventType TranslationEvent::_type("Varnex::TranslationEvent", 21, &TranslationEvent::create);
EventType StatusEvent::_type("Varnex::StatusEvent", 24, &StatusEvent::create);
EventType TranslationRotationEvent::_type("Varnex::TranslationRotationEvent", 25, &TranslationRotationEvent::create);
EventType TrackedPointsEvent::_type("Varnex::TrackedPointsEvent", 26, &TrackedPointsEvent::create);
EventType HelloEvent::_type("Varnex::HelloEvent", 8, &HelloEvent::create);

namespace {

char* copyText(const char* text) {
    const std::size_t size = std::strlen(text) + 1;
    auto* const copy = new char[size];
    std::memcpy(copy, text, size);
    return copy;
}

std::string orEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

}  // namespace

EventType::EventType(const char* newName, short newId, Factory newCreate) : id(newId), create(newCreate) {
    if (_typeMap == nullptr) _typeMap = new std::map<short, EventType*>;
    if (newName != nullptr && *newName != '\0') name = copyText(newName);
    const auto [entry, inserted] = _typeMap->try_emplace(id, this);
    if (inserted) return;
    printError("ERROR: There is alrady a EventType with the ID " + std::to_string(id) + " registered (\"" +
               orEmpty(entry->second->name) + "\" - \"" + orEmpty(name) + "\")!");
}

EventType::~EventType() {
    if (_typeMap != nullptr) {
        _typeMap->erase(id);
        if (_typeMap->empty()) {
            delete _typeMap;
            _typeMap = nullptr;
        }
    }
    delete[] name;
}

EventType* EventType::findType(short id) {
    if (_typeMap == nullptr) return nullptr;
    const auto entry = _typeMap->lower_bound(id);
    return entry != _typeMap->end() && entry->first == id ? entry->second : nullptr;
}

std::vector<const EventType*> EventType::getTypes() {
    std::vector<const EventType*> types;
    if (_typeMap == nullptr) return types;
    for (const auto& [id, type] : *_typeMap) types.push_back(type);
    return types;
}

}  // namespace Varnex
