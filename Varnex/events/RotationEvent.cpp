#include <Varnex/events/RotationEvent.h>

#include <algorithm>
#include <iterator>

namespace Varnex {

RotationEvent::RotationEvent(const char* handle, bool flag1, bool flag2) : TransformEvent(handle, flag1, flag2) {}

Event* RotationEvent::create() {
    return new RotationEvent;
}

EventType* RotationEvent::type() const {
    return &_type;
}

void RotationEvent::set(float a, float b, float c, float d) {
    const float v[] = {a, b, c, d};
    set(v);
}

void RotationEvent::set(const float* v) {
    std::copy_n(v, std::size(rotation_), rotation_);
}

void RotationEvent::addFields() {
    TransformEvent::addFields();
    for (const float value : rotation_) addField(value);
}

void RotationEvent::getFields() {
    TransformEvent::getFields();
    for (float& value : rotation_) getField(value);
}

}  // namespace Varnex
