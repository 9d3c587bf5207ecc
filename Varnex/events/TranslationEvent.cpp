#include <Varnex/events/TranslationEvent.h>

#include <algorithm>
#include <iterator>

namespace Varnex {

TranslationEvent::TranslationEvent(const char* handle, bool flag1, bool flag2) : TransformEvent(handle, flag1, flag2) {}

Event* TranslationEvent::create() {
    return new TranslationEvent;
}

EventType* TranslationEvent::type() const {
    return &_type;
}

void TranslationEvent::set(float x, float y, float z) {
    const float v[] = {x, y, z};
    set(v);
}

void TranslationEvent::set(const float* v) {
    std::copy_n(v, std::size(translation_), translation_);
}

void TranslationEvent::addFields() {
    TransformEvent::addFields();
    for (const float value : translation_) addField(value);
}

void TranslationEvent::getFields() {
    TransformEvent::getFields();
    for (float& value : translation_) getField(value);
}

}  // namespace Varnex
