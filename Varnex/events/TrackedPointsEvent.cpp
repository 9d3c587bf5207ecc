#include <Varnex/events/TrackedPointsEvent.h>

#include <algorithm>

namespace Varnex {

namespace {

constexpr long kRecordSize = 24;
static_assert(sizeof(TrackedPointsEvent::TrackedPoint) == kRecordSize);

int recordsThatBegin(long bytes) {
    return static_cast<int>((std::max(bytes, 0L) + kRecordSize - 1) / kRecordSize);
}

}  // namespace

TrackedPointsEvent::TrackedPointsEvent(const char* handle) : HandleEvent(handle) {}

Event* TrackedPointsEvent::create() {
    return new TrackedPointsEvent;
}

EventType* TrackedPointsEvent::type() const {
    return &_type;
}

void TrackedPointsEvent::push(float x, float y, float z, float w, int id, int flags) {
    points_.push_back({x, y, z, w, id, flags});
    count_ = static_cast<int>(points_.size());
}

void TrackedPointsEvent::set(const std::vector<TrackedPoint>& points) {
    points_ = points;
    count_ = static_cast<int>(points_.size());
}

void TrackedPointsEvent::addPoint(const TrackedPoint& point) {
    for (const float value : {point.x, point.y, point.z, point.w}) addField(value);
    addField(point.id);
    addField(point.flags);
}

TrackedPointsEvent::TrackedPoint TrackedPointsEvent::takePoint() {
    TrackedPoint point;
    for (float* value : {&point.x, &point.y, &point.z, &point.w}) getField(*value);
    getField(point.id);
    getField(point.flags);
    return point;
}

void TrackedPointsEvent::addFields() {
    HandleEvent::addFields();
    addField(count_);
    for (int i = 0; i < count_; ++i) addPoint(points_[static_cast<std::size_t>(i)]);
}

void TrackedPointsEvent::getFields() {
    HandleEvent::getFields();
    getField(count_);
    // The peer may claim any number: only records that begin inside the event are there.
    count_ = std::min(count_, recordsThatBegin(remaining()));
    points_.reserve(points_.size() + static_cast<std::size_t>(std::max(count_, 0)));
    for (int i = 0; i < count_; ++i) points_.push_back(takePoint());
}

}  // namespace Varnex
