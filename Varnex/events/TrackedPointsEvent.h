#pragma once

#include <Varnex/events/HandleEvent.h>

#include <vector>

namespace Varnex {

/// The tracked points of a named object. Type ID 26.
///
/// The application chooses unit and frame, and the meaning of `w`, `id` and `flags`.
class VARNEX_API TrackedPointsEvent : public HandleEvent {
public:
    explicit TrackedPointsEvent(const char* handle = nullptr);

    static Event* create();
    static EventType _type;
    [[nodiscard]] EventType* type() const override;

    /// One point; the application gives the values their meaning.
    struct TrackedPoint {
        float x, y, z, w;
        int id, flags;
    };

    /// Appends one point.
    void push(float x, float y, float z, float w, int id, int flags);
    /// Replaces all points.
    void set(const std::vector<TrackedPoint>& points);

    [[nodiscard]] const std::vector<TrackedPoint>& getPoints() const { return points_; }
    /// How many of the points are sent, from the first; never more than there are. None when a peer sent a negative
    /// count.
    [[nodiscard]] int getCount() const { return count_; }

protected:
    void addFields() override;
    void getFields() override;

private:
    void addPoint(const TrackedPoint& point);
    [[nodiscard]] TrackedPoint takePoint();

    std::vector<TrackedPoint> points_;
    int count_ = 0;
};

}  // namespace Varnex
