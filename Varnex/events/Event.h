#pragma once

#include <Varnex/Export.h>
#include <Varnex/events/EventType.h>

#include <iosfwd>
#include <memory>
#include <string>

namespace Varnex {

class Receiver;
class Sender;

/// A typed message that crosses between processes: a 12-byte header and then the fields of its class, big-endian.
/// docs/wire-format.md has the layout.
///
/// A subclass overrides `addFields` and `getFields`, each calling its parent's first and then treating the same fields
/// in the same order, and has a static `create()`, a static `_type` with an ID of its own, and `type()`:
///
///     void addFields() override { HandleEvent::addFields(); addField(charge_); }
///     void getFields() override { HandleEvent::getFields(); getField(charge_); }
///
/// An event holds no buffer outside these operations; different events may be used from different threads. Failures
/// are told by the result and by an ERROR line; nothing throws. docs/adding-an-event.md has a whole class.
class VARNEX_API Event {
protected:
    // The order of the virtual operations is binary interface: append, never reorder.

    /// Appends the header, and in overrides the fields of the class.
    virtual void addFields();
    /// Takes the header, and in overrides the fields of the class.
    virtual void getFields();

public:
    virtual ~Event();

    /// The registered type of the class.
    [[nodiscard]] virtual EventType* type() const;

    /// A plain event on the heap, without fields; the caller owns it.
    static Event* create();
    static EventType _type;

    /// Bytes of the header.
    static constexpr int kHeaderSize = 12;
    /// Bytes of the buffer that serialising begins with.
    static constexpr int kFirstBufferSize = 1024;
    static constexpr unsigned int kDefaultMaxLength = 256u << 20;

    Event() = default;
    /// Copying an event copies its tag, and in subclasses its fields.
    Event(const Event& other) : _tag(other._tag) {}
    Event& operator=(const Event& other);

    /// A word of the header for the application's use, 0 at first.
    [[nodiscard]] unsigned short getTag() const { return _tag; }
    void setTag(unsigned short tag) { _tag = tag; }

    /// Sends the event in one call of the sender, which is not null. True when all of it was taken.
    bool send(Sender* s);

    /// Reads one event, which the caller owns, from a receiver that is not null. True with a null `out`: the peer
    /// delivered nothing and is gone. False: failed, or the wait was broken; the stream may then be inside an event, so
    /// close it. An event without fields cannot come this way, see `EventReader`.
    static bool receive(Receiver* r, Event*& out);

    /// Reads one event from a stream. False, without a line, at its end, when it breaks off, and when the length is
    /// below that of a header or over the limit.
    static bool receive(std::istream& is, Event*& out);

    /// Makes the one event that `size` bytes of memory hold, such as a datagram. False, with an ERROR line, when they
    /// hold something else or less than the header says; bytes after the event are left alone.
    static bool parse(const void* data, int size, Event*& out);

    /// Writes the event with one write.
    friend VARNEX_API std::ostream& operator<<(std::ostream& os, Event& e);

    /// Writes the serialised event to a file, as it is or as decimal numbers, and reports it on the output stream.
    void dump(const char* fileName, bool binary);

    /// The longest event that is received, header included; a longer one counts as incomplete. 0: no limit but the
    /// 2^31 - 1 bytes that an event can have. For the whole process, from any thread.
    static void setMaxLength(unsigned int bytes);
    [[nodiscard]] static unsigned int getMaxLength();

protected:
    // Writing. Each appends one value at the write position.
    void addData(const void* data, long n);
    void addField(bool value);  ///< 2 bytes
    void addField(const short& value);
    void addField(const unsigned short& value);
    void addField(const int& value);
    void addField(const unsigned int& value);
    /// 4 bytes also where `long` has 8: the low 32 bits. Note that `int64_t` and `size_t` may be `long`.
    void addField(const long& value);
    void addField(const unsigned long& value);
    void addFieldUInt64(const unsigned long long& value);
    void addField(const float& value);
    void addField(const double& value);
    /// Raw bytes, no count: the reader must know it. -1: up to the terminator, which is not written.
    void addField(const char* data, int len = -1);
    /// A 16-bit count and the bytes. At most 32,767 bytes can be read back.
    void addField(const std::string& value);

    // Reading. Each takes one value at the read position; past the end it gives zero and the position stays.
    void getData(void* data, long n);
    void getField(bool& value);
    void getField(short& value);
    void getField(unsigned short& value);
    void getField(int& value);
    void getField(unsigned int& value);
    void getField(long& value);           ///< 4 bytes, sign-extended
    void getField(unsigned long& value);  ///< 4 bytes, zero-extended
    void getFieldUInt64(unsigned long long& value);
    void getField(float& value);
    void getField(double& value);
    /// Exactly `len` bytes and no terminator, or nothing.
    void getField(char* data, int len);
    /// Empty past the end; unchanged when its count is larger than what is left (the count is taken all the same).
    void getField(std::string& value);

    /// Bytes between the position and the end of the event, or of the buffer while writing.
    [[nodiscard]] long remaining() const { return _buffer + _size - _pos; }

    /// Serialises into the buffer that the caller has set up with `new char[]`: `_buffer` and `_pos` at its beginning,
    /// `_size` its capacity; growing may replace it. The number of bytes, 0 when the event is too large.
    int write();
    /// Takes header and fields from the `_size` bytes at `_buffer`; the number of bytes consumed.
    int read();

    static const char _magic[5];

    char* _buffer = nullptr;
    char* _pos = nullptr;
    int _size = 0;  ///< capacity while writing, length of the event while reading
    bool _valid = false;
    unsigned short _tag = 0;
    short _typeID = -1;

private:
    friend class EventBatch;
    friend class EventReader;

    template <class UInt>
    void addNumber(UInt value);
    template <class UInt>
    [[nodiscard]] UInt takeNumber();

    /// Lends the event a buffer for one operation, which ends in the destructor, also by an exception of an override.
    class Buffer {
    public:
        Buffer(Event& event, char* bytes, int size, bool quiet = false);
        ~Buffer();
        Buffer(const Buffer&) = delete;
        Buffer& operator=(const Buffer&) = delete;

    private:
        Event& event_;
    };

    bool grow(long long needed);
    void releaseBuffer();

    enum class HeaderVerdict { Good, BadLength, Refused };
    static HeaderVerdict checkHeader(const char* header, const EventType*& type, int& length);
    [[nodiscard]] static bool isTooLong(int length);
    [[nodiscard]] static std::unique_ptr<Event> makeEvent(const EventType& type, const char* data, int length);
    static bool deliver(std::unique_ptr<Event> event, Event*& out);

    bool _borrowed = false;  // the buffer is the lender's, not one of our own that growing has made
    bool _quiet = false;     // growing is not announced
    bool _tooLarge = false;
};

}  // namespace Varnex
