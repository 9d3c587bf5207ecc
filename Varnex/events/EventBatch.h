#pragma once

#include <Varnex/Export.h>

#include <memory>

namespace Varnex {

class Event;
class Sender;

/// Collects events and sends them in one call, which a stream receiver reads back one by one. Not for datagrams, where
/// each event travels alone. One thread at a time.
class VARNEX_API EventBatch {
public:
    static constexpr int kDefaultMaxBytes = 64 << 20;

    EventBatch() = default;
    EventBatch(const EventBatch&) = delete;
    EventBatch& operator=(const EventBatch&) = delete;

    /// Appends the event as it is now. False when it cannot be serialised, has no header because an override does not
    /// call its parent, or would not fit the limit; the batch is as before then.
    bool add(Event& event);

    /// Sends everything in one call of the sender; the batch is empty after success. False when not all was taken: the
    /// batch then stays, but the stream is out of step, so close it.
    bool send(Sender* sender);

    /// Forgets the events and keeps the memory.
    void clear();

    /// The bytes of all events; valid until the next change.
    [[nodiscard]] const char* getData() const { return buffer_.get(); }
    [[nodiscard]] int getSize() const { return used_; }
    [[nodiscard]] int getCount() const { return count_; }

    /// The largest batch in bytes, for later `add` calls; 0 or less: no limit but memory and the 2^31 - 1 bytes of one
    /// send.
    void setMaxBytes(int bytes) { maxBytes_ = bytes; }

private:
    [[nodiscard]] bool reserve(int bytes);
    [[nodiscard]] bool wouldFit(int bytes) const;

    std::unique_ptr<char[]> buffer_;
    int capacity_ = 0;
    int used_ = 0;
    int count_ = 0;
    int maxBytes_ = kDefaultMaxBytes;
};

}  // namespace Varnex
