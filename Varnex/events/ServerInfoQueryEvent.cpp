#include <Varnex/events/ServerInfoQueryEvent.h>

namespace Varnex {

Event* ServerInfoQueryEvent::create() {
    return new ServerInfoQueryEvent;
}

EventType* ServerInfoQueryEvent::type() const {
    return &_type;
}

void ServerInfoQueryEvent::addFields() {
    Event::addFields();
    addField(mask_);
    addField(id_);
}

void ServerInfoQueryEvent::getFields() {
    Event::getFields();
    getField(mask_);
    getField(id_);
}

}  // namespace Varnex
