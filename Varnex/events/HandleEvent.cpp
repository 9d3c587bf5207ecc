#include <Varnex/events/HandleEvent.h>

namespace Varnex {

HandleEvent::HandleEvent(const char* handle) {
    setHandle(handle);
}

Event* HandleEvent::create() {
    return new HandleEvent;
}

EventType* HandleEvent::type() const {
    return &_type;
}

void HandleEvent::setHandle(const char* handle) {
    handle_ = handle == nullptr ? "" : handle;
}

void HandleEvent::addFields() {
    Event::addFields();
    addField(handle_);
    addFieldUInt64(value_);
}

void HandleEvent::getFields() {
    Event::getFields();
    getField(handle_);
    getFieldUInt64(value_);
}

}  // namespace Varnex
