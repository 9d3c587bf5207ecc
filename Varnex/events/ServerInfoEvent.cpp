#include <Varnex/events/ServerInfoEvent.h>

namespace Varnex {

Event* ServerInfoEvent::create() {
    return new ServerInfoEvent;
}

EventType* ServerInfoEvent::type() const {
    return &_type;
}

void ServerInfoEvent::addFields() {
    Event::addFields();
    addField(status_);
    addField(id_);
    addField(port_);
    addField(mask_);
    addField(hostAddress_);
    addField(hostName_);
}

void ServerInfoEvent::getFields() {
    Event::getFields();
    getField(status_);
    getField(id_);
    getField(port_);
    getField(mask_);
    getField(hostAddress_);
    getField(hostName_);
}

}  // namespace Varnex
