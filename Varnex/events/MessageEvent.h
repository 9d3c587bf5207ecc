#pragma once

#include <Varnex/events/Event.h>

#include <string>

namespace Varnex {

/// A text with a number that tells what kind of text it is. Type ID 10.
///
/// The application gives the number its meaning.
class VARNEX_API MessageEvent : public Event {
public:
    /// Null gives the empty text.
    explicit MessageEvent(short code = 0, const char* text = nullptr);

    static Event* create();
    static EventType _type;
    [[nodiscard]] EventType* type() const override;

    [[nodiscard]] short getCode() const { return code_; }
    void setCode(short code) { code_ = code; }

    [[nodiscard]] const std::string& getText() const { return text_; }
    /// Null empties the text. At most 32,767 bytes can be received.
    void setMessageText(const char* text);
    void setText(const std::string& text) { text_ = text; }

protected:
    void addFields() override;
    void getFields() override;

private:
    short code_;
    std::string text_;
};

}  // namespace Varnex
