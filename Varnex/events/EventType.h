#pragma once

#include <Varnex/Export.h>

#include <map>
#include <vector>

namespace Varnex {

class Event;

/// Binds a type ID of the wire to a class name and to a factory of empty events.
///
/// For static objects: an event class registers by having one, before `main`, and unregisters at the end of the
/// process. There is no lock: the look-ups may be used from any thread once that is over.
class VARNEX_API EventType {
public:
    /// Makes an event on the heap that the caller owns; null when it cannot.
    using Factory = Event* (*)();

    /// Registers under `id`. A second type with the same ID prints an ERROR line and stays unregistered. The name is
    /// copied; null and "" both give a null name.
    EventType(const char* name, short id, Factory create);
    EventType(const EventType&) = delete;
    EventType& operator=(const EventType&) = delete;

    /// Takes the entry under its ID out, even when another object had registered it.
    virtual ~EventType();

    /// The type with this ID, or null.
    [[nodiscard]] static EventType* findType(short id);

    /// All types, by ascending ID.
    [[nodiscard]] static std::vector<const EventType*> getTypes();

    const char* name = nullptr;  ///< owned
    short id;
    Factory create;

protected:
    /// Null while no type is registered.
    static std::map<short, EventType*>* _typeMap;
};

}  // namespace Varnex
