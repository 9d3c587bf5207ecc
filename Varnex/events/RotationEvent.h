#pragma once

#include <Varnex/events/TransformEvent.h>

namespace Varnex {

/// The orientation of a named object. Type ID 23.
///
/// The application gives the four values their meaning, for example a quaternion.
class VARNEX_API RotationEvent : public TransformEvent {
public:
    explicit RotationEvent(const char* handle = nullptr, bool flag1 = false, bool flag2 = false);

    static Event* create();
    static EventType _type;
    [[nodiscard]] EventType* type() const override;

    void set(float a, float b, float c, float d);
    /// Copies 4 values, which are there.
    void set(const float* v);
    /// 4 values, as long as the event lives.
    [[nodiscard]] const float* getRotation() const { return rotation_; }

protected:
    void addFields() override;
    void getFields() override;

private:
    float rotation_[4] = {};
};

}  // namespace Varnex
