#pragma once

#include <Varnex/events/TransformEvent.h>

namespace Varnex {

/// The position and the orientation of a named object. Type ID 25.
///
/// The application chooses unit and frame, and the meaning of the four rotation values, for example a quaternion.
class VARNEX_API TranslationRotationEvent : public TransformEvent {
public:
    explicit TranslationRotationEvent(const char* handle = nullptr, bool flag1 = false, bool flag2 = false);

    static Event* create();
    static EventType _type;
    [[nodiscard]] EventType* type() const override;

    /// The translation, then the rotation.
    void set(float x, float y, float z, float a, float b, float c, float d);
    /// Copies 7 values, the translation first.
    void set(const float* v);

    void setTranslation(float x, float y, float z);
    /// Copies 3 values, which are there.
    void setTranslation(const float* v);
    void setRotation(float a, float b, float c, float d);
    /// Copies 4 values.
    void setRotation(const float* v);

    /// 3 values, as long as the event lives.
    [[nodiscard]] const float* getTranslation() const { return translation_; }
    /// 4 values, as long as the event lives.
    [[nodiscard]] const float* getRotation() const { return rotation_; }

protected:
    void addFields() override;
    void getFields() override;

private:
    float translation_[3] = {};
    float rotation_[4] = {};
};

}  // namespace Varnex
