#include <Varnex/events/MessageEvent.h>

namespace Varnex {

MessageEvent::MessageEvent(short code, const char* text) : code_(code) {
    setMessageText(text);
}

Event* MessageEvent::create() {
    return new MessageEvent;
}

EventType* MessageEvent::type() const {
    return &_type;
}

void MessageEvent::setMessageText(const char* text) {
    text_ = text == nullptr ? "" : text;
}

void MessageEvent::addFields() {
    Event::addFields();
    addField(code_);
    addField(text_);
}

void MessageEvent::getFields() {
    Event::getFields();
    getField(code_);
    getField(text_);
}

}  // namespace Varnex
