#pragma once

#include <Varnex/events/TransformEvent.h>

namespace Varnex {

/// The position of a named object. Type ID 21.
///
/// The application chooses unit and frame.
class VARNEX_API TranslationEvent : public TransformEvent {
public:
    explicit TranslationEvent(const char* handle = nullptr, bool flag1 = false, bool flag2 = false);

    static Event* create();
    static EventType _type;
    [[nodiscard]] EventType* type() const override;

    void set(float x, float y, float z);
    /// Copies 3 values, which are there.
    void set(const float* v);
    /// 3 values, as long as the event lives.
    [[nodiscard]] const float* getTranslation() const { return translation_; }

protected:
    void addFields() override;
    void getFields() override;

private:
    float translation_[3] = {};
};

}  // namespace Varnex
