#include <Varnex/events/StatusEvent.h>

namespace Varnex {

StatusEvent::StatusEvent(const char* handle) : HandleEvent(handle) {}

Event* StatusEvent::create() {
    return new StatusEvent;
}

EventType* StatusEvent::type() const {
    return &_type;
}

void StatusEvent::addFields() {
    HandleEvent::addFields();
    addField(status_);
}

void StatusEvent::getFields() {
    HandleEvent::getFields();
    getField(status_);
}

}  // namespace Varnex
