#pragma once

#include <Varnex/events/HandleEvent.h>

namespace Varnex {

/// The status of a named object. Type ID 24.
///
/// The application gives the number its meaning; 0 at first.
class VARNEX_API StatusEvent : public HandleEvent {
public:
    explicit StatusEvent(const char* handle = nullptr);

    static Event* create();
    static EventType _type;
    [[nodiscard]] EventType* type() const override;

    [[nodiscard]] int getStatus() const { return status_; }
    void setStatus(int status) { status_ = status; }

protected:
    void addFields() override;
    void getFields() override;

private:
    int status_ = 0;
};

}  // namespace Varnex
