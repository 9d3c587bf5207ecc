#include <Varnex/events/TransformEvent.h>

namespace Varnex {

TransformEvent::TransformEvent(const char* handle, bool flag1, bool flag2)
    : HandleEvent(handle), flag1_(flag1), flag2_(flag2) {}

Event* TransformEvent::create() {
    return new TransformEvent;
}

EventType* TransformEvent::type() const {
    return &_type;
}

void TransformEvent::addFields() {
    HandleEvent::addFields();
    addField(flag1_);
    addField(flag2_);
}

void TransformEvent::getFields() {
    HandleEvent::getFields();
    getField(flag1_);
    getField(flag2_);
}

}  // namespace Varnex
