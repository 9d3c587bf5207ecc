#include <Varnex/events/TranslationRotationEvent.h>

#include <algorithm>
#include <iterator>

namespace Varnex {

TranslationRotationEvent::TranslationRotationEvent(const char* handle, bool flag1, bool flag2)
    : TransformEvent(handle, flag1, flag2) {}

Event* TranslationRotationEvent::create() {
    return new TranslationRotationEvent;
}

EventType* TranslationRotationEvent::type() const {
    return &_type;
}

void TranslationRotationEvent::set(float x, float y, float z, float a, float b, float c, float d) {
    setTranslation(x, y, z);
    setRotation(a, b, c, d);
}

void TranslationRotationEvent::set(const float* v) {
    setTranslation(v);
    setRotation(v + std::size(translation_));
}

void TranslationRotationEvent::setTranslation(float x, float y, float z) {
    const float v[] = {x, y, z};
    setTranslation(v);
}

void TranslationRotationEvent::setTranslation(const float* v) {
    std::copy_n(v, std::size(translation_), translation_);
}

void TranslationRotationEvent::setRotation(float a, float b, float c, float d) {
    const float v[] = {a, b, c, d};
    setRotation(v);
}

void TranslationRotationEvent::setRotation(const float* v) {
    std::copy_n(v, std::size(rotation_), rotation_);
}

void TranslationRotationEvent::addFields() {
    TransformEvent::addFields();
    for (const float value : translation_) addField(value);
    for (const float value : rotation_) addField(value);
}

void TranslationRotationEvent::getFields() {
    TransformEvent::getFields();
    for (float& value : translation_) getField(value);
    for (float& value : rotation_) getField(value);
}

}  // namespace Varnex
