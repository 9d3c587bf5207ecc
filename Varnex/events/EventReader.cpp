#include <Varnex/events/EventReader.h>

#include <Varnex/events/BigEndian.h>
#include <Varnex/events/EventHeader.h>
#include <Varnex/transport/Receiver.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <istream>
#include <utility>

namespace Varnex {

namespace {

constexpr std::size_t kFirstCapacity = 4096;
constexpr std::size_t kSkipStep = 65536;
constexpr std::size_t kPolledBytes = 1 << 20;   // what a call without a wait takes at most before it gives up
constexpr std::size_t kKeptCapacity = 1 << 20;  // a larger buffer is given back after its event

}  // namespace

EventReader::Result EventReader::read(int ms) {
    if (!fault_.empty()) return breakOff(fault_);
    shrink();
    deadline_ = ms > 0 ? Clock::now() + std::chrono::milliseconds(ms) : Clock::time_point();
    waitMs_ = ms;
    pulled_ = 0;
    Step step = headerRead_ ? Step::Done : readHeader();
    if (step == Step::Done) step = skips_ ? skipBody() : fill(length_);
    if (step != Step::Done) return stop(step);
    return finish();
}

/// Takes a header that is right, throwing bytes away before it when that is wanted.
EventReader::Step EventReader::readHeader() {
    for (;;) {
        if (const Step step = fill(Event::kHeaderSize); step != Step::Done) return step;
        std::string fault = headerFault();
        if (fault.empty()) break;
        if (!resynchronise_) {
            fault_ = std::move(fault);
            return Step::Failed;
        }
        dropToNextMagic();
    }
    length_ = loadBigEndian<std::uint32_t>(buffer_.get() + kLengthOffset);
    typeID_ = static_cast<short>(loadBigEndian<std::uint16_t>(buffer_.get() + kTypeOffset));
    type_ = EventType::findType(typeID_);
    skips_ = type_ == nullptr && !keepUnknown_;
    headerRead_ = true;
    return Step::Done;
}

std::string EventReader::headerFault() const {
    if (std::memcmp(buffer_.get(), Event::_magic, kMagicSize) != 0) return "wrong magic";
    const std::size_t length = loadBigEndian<std::uint32_t>(buffer_.get() + kLengthOffset);
    const std::size_t limit = maxLength_ == 0 ? INT_MAX : std::min<std::size_t>(maxLength_, INT_MAX);
    if (length < Event::kHeaderSize) return "length " + std::to_string(length) + " is below that of a header";
    if (length > limit) return "length " + std::to_string(length) + " is above the limit of " + std::to_string(limit);
    return {};
}

/// Drops at least one byte, and then as many as cannot be the beginning of a magic.
void EventReader::dropToNextMagic() {
    std::size_t dropped = 1;
    while (dropped < have_) {
        const std::size_t known = std::min(kMagicSize, have_ - dropped);
        if (std::memcmp(buffer_.get() + dropped, Event::_magic, known) == 0) break;
        ++dropped;
    }
    have_ -= dropped;
    lost_ += dropped;
    std::memmove(buffer_.get(), buffer_.get() + dropped, have_);
}

/// Takes the rest of an event of an unknown type, keeping none of it.
EventReader::Step EventReader::skipBody() {
    while (have_ < length_) {
        int n = static_cast<int>(std::min({length_ - have_, capacity_, kSkipStep}));
        if (const Step step = pull(buffer_.get(), n); step != Step::Done) return step;
        have_ += static_cast<std::size_t>(n);
    }
    return Step::Done;
}

/// Reads until the buffer holds `size` bytes of the present event.
EventReader::Step EventReader::fill(std::size_t size) {
    while (have_ < size) {
        makeRoom(size);
        int n = static_cast<int>(std::min(size, capacity_) - have_);
        if (const Step step = pull(buffer_.get() + have_, n); step != Step::Done) return step;
        have_ += static_cast<std::size_t>(n);
    }
    return Step::Done;
}

/// Doubles a full buffer, so that its size follows what has arrived and not what a header claims.
void EventReader::makeRoom(std::size_t size) {
    if (have_ < capacity_) return;
    const std::size_t capacity = std::max(kFirstCapacity, std::min(size, 2 * capacity_));
    auto bigger = std::make_unique_for_overwrite<char[]>(capacity);
    if (have_ > 0) std::memcpy(bigger.get(), buffer_.get(), have_);
    buffer_ = std::move(bigger);
    capacity_ = capacity;
}

/// Forgets the last event, and gives a large buffer back.
void EventReader::shrink() {
    if (std::exchange(handedOut_, 0) == 0 || capacity_ <= kKeptCapacity) return;
    buffer_.reset();
    capacity_ = 0;
}

/// Takes at least one and at most `n` bytes from the source.
EventReader::Step EventReader::pull(char* bytes, int& n) {
    if (stream_ != nullptr) {
        stream_->read(bytes, n);
        n = static_cast<int>(stream_->gcount());
        if (n > 0) return Step::Done;
        return stream_->bad() ? Step::Failed : Step::Closed;
    }
    const int left = timeLeft();
    // A peer that never pauses must not hold the caller either.
    if (left == 0 && pulled_ > (waitMs_ == 0 ? kPolledBytes : 0)) return Step::TimedOut;
    switch (receiver_->waitForData(left)) {
        case Receiver::WaitData:
            break;
        case Receiver::WaitBroken:
            return Step::Woken;
        case Receiver::WaitTimedOut:
            return Step::TimedOut;
        default:
            return Step::Failed;
    }
    if (!receiver_->receive(bytes, n)) return Step::Failed;
    pulled_ += static_cast<std::size_t>(std::max(n, 0));
    return n > 0 ? Step::Done : Step::Closed;
}

int EventReader::timeLeft() const {
    if (waitMs_ <= 0) return waitMs_;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - Clock::now());
    return std::max(0, static_cast<int>(left.count()));
}

/// Hands out the present event, which is complete, and makes ready for the next.
EventReader::Result EventReader::finish() {
    Result result;
    headerRead_ = false;
    have_ = 0;
    if (type_ != nullptr) result.event = Event::makeEvent(*type_, buffer_.get(), static_cast<int>(length_));
    result.status = result.event == nullptr ? Status::Unknown : Status::Event;
    result.typeID = typeID_;
    result.length = length_;
    result.lost = std::exchange(lost_, 0);
    handedOut_ = skips_ ? 0 : length_;
    return result;
}

EventReader::Result EventReader::stop(Step step) {
    if (step == Step::Failed) return breakOff(fault_.empty() ? "receiving failed" : fault_);
    if (step == Step::Closed) return close();
    Result result;
    result.status = step == Step::Woken ? Status::Woken : Status::TimedOut;
    return result;
}

/// A peer may go between two events; one that leaves a part of an event behind has broken off.
EventReader::Result EventReader::close() {
    if (headerRead_) return breakOff("the peer closed inside an event");
    if (resynchronise_)
        while (have_ > 0 && std::memcmp(buffer_.get(), Event::_magic, std::min(kMagicSize, have_)) != 0)
            dropToNextMagic();
    if (have_ > 0) return breakOff("the peer closed inside a header");
    Result result;
    result.status = Status::Closed;
    result.lost = std::exchange(lost_, 0);
    return result;
}

EventReader::Result EventReader::breakOff(std::string reason) {
    fault_ = std::move(reason);
    Result result;
    result.lost = std::exchange(lost_, 0);
    result.reason = fault_;
    return result;
}

}  // namespace Varnex
