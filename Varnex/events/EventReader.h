#pragma once

#include <Varnex/Export.h>
#include <Varnex/events/Event.h>

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

namespace Varnex {

class Receiver;

/// Reads events one after the other and tells apart what can happen, where `Event::receive` only knows true and false.
///
/// It skips events of unknown types by their length, takes events without fields, and a broken or timed-out wait inside
/// an event loses nothing: the next call goes on where it stopped. It reads no byte beyond the event it returns, prints
/// no line of its own, and uses memory in step with the bytes that arrive, whatever length a header claims.
///
/// A reader belongs to one stream: make a new one after a reconnect. One thread.
///
///     BufferedCommunicator buffered(&client);  // many events for each system call
///     EventReader reader(&buffered);
///     while (const auto event = reader.read().event) handle(*event);
///
/// This loop ends at anything but an event, an unknown type included; look at `status` to tell these apart.
class VARNEX_API EventReader {
public:
    enum class Status {
        Event,    ///< an event
        Unknown,  ///< an event was skipped: nobody registered its type, or the type's factory made none
        Closed,   ///< the peer closed between two events
        Broken,   ///< the stream cannot be read on; every later call says so again
        Woken,    ///< `breakWait` ended the wait
        TimedOut  ///< the time ran out
    };

    struct Result {
        Status status = Status::Broken;
        std::unique_ptr<Event> event;  ///< with `Event` only
        short typeID = -1;             ///< with `Event` and `Unknown`
        std::size_t length = 0;        ///< bytes of it, header included
        unsigned long long lost = 0;   ///< bytes thrown away since the last event to find one again
        std::string reason;            ///< with `Broken`: why
    };

    /// The source is there and outlives the reader.
    explicit EventReader(Receiver* receiver) : receiver_(receiver) {}
    explicit EventReader(std::istream& stream) : stream_(&stream) {}

    /// Reads one event. `ms` limits the whole call in milliseconds, -1 without limit, 0: what is there already; a
    /// stream is read without limit.
    [[nodiscard]] Result read(int ms = -1);

    /// The longest event that is accepted, header included; 0: no limit but the 2^31 - 1 bytes that an event can have.
    /// At first that of `Event::setMaxLength`.
    void setMaxLength(unsigned int bytes) { maxLength_ = bytes; }

    /// After a wrong magic or a wrong length, look for the next magic instead of giving up. Off at first. Searching
    /// takes few bytes at a time: read through a `BufferedCommunicator`.
    void setResynchronise(bool on) { resynchronise_ = on; }

    /// Keep the bytes of events of unknown types too, for `getBytes`, instead of skipping them. Off at first; for
    /// events whose first bytes are still to come.
    void setKeepUnknown(bool on) { keepUnknown_ = on; }

    /// What was received of the event handed out last, header included; valid until the next `read`. Empty after an
    /// event that was skipped, and after everything that is no event.
    [[nodiscard]] std::string_view getBytes() const { return {buffer_.get(), handedOut_}; }

private:
    using Clock = std::chrono::steady_clock;
    enum class Step { Done, Closed, Failed, Woken, TimedOut };

    [[nodiscard]] Step fill(std::size_t size);
    [[nodiscard]] Step pull(char* bytes, int& n);
    void makeRoom(std::size_t size);
    void shrink();

    [[nodiscard]] Step readHeader();
    [[nodiscard]] Step skipBody();
    [[nodiscard]] std::string headerFault() const;
    void dropToNextMagic();

    [[nodiscard]] int timeLeft() const;

    [[nodiscard]] Result finish();
    [[nodiscard]] Result stop(Step step);
    [[nodiscard]] Result close();
    [[nodiscard]] Result breakOff(std::string reason);

    Receiver* receiver_ = nullptr;
    std::istream* stream_ = nullptr;
    unsigned int maxLength_ = Event::getMaxLength();
    bool resynchronise_ = false;
    bool keepUnknown_ = false;
    int waitMs_ = -1;  // of the present call
    Clock::time_point deadline_;
    std::size_t pulled_ = 0;  // bytes taken in the present call

    std::unique_ptr<char[]> buffer_;
    std::size_t capacity_ = 0;
    std::size_t have_ = 0;       // bytes of the present event, or of what may become its header
    std::size_t handedOut_ = 0;  // bytes of the last event, which stand in the buffer
    bool headerRead_ = false;
    bool skips_ = false;               // the present event, without keeping it
    std::size_t length_ = 0;           // of the present event
    short typeID_ = -1;                // of the present event
    const EventType* type_ = nullptr;  // null: unknown
    unsigned long long lost_ = 0;
    std::string fault_;
};

}  // namespace Varnex
