#pragma once

#include <tests/support/CapturedDiagnostics.h>
#include <tests/support/EventWire.h>
#include <tests/support/Scripted.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>

/// The bytes of hexadecimal digits, which may stand in groups.
inline std::string bytesOf(std::string hex) {
    std::erase(hex, ' ');
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2)
        bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return bytes;
}

/// The event that `bytes` hold, or null. They lie in a block of exactly their size: a sanitizer sees reads past its
/// end.
inline std::unique_ptr<Varnex::Event> parsed(const std::string& bytes) {
    Varnex::Event* event = nullptr;
    Varnex::Event::parse(std::vector(bytes.begin(), bytes.end()).data(), static_cast<int>(bytes.size()), event);
    return std::unique_ptr<Varnex::Event>(event);
}

/// The event that comes from a stream or, given by address, from a receiver, or null.
template <class Source>
std::unique_ptr<Varnex::Event> received(Source&& source) {
    Varnex::Event* event = nullptr;
    EXPECT_TRUE(Varnex::Event::receive(source, event) || event == nullptr);
    return std::unique_ptr<Varnex::Event>(event);
}

inline const std::string kMessage = bytesOf("56583031 00000012 000a 0000 0003 0002 6869");  // MessageEvent(3, "hi")
inline const std::string kPlain = bytesOf("56583031 0000000c 0000 0000");
inline const std::string kUnknown = bytesOf("56583031 00000010 0007 0000 01020304");
inline const std::string kPoor = bytesOf("56583031 0000000e 03ea 0000 0001");    // its factory finds no memory
inline const std::string kUnmade = bytesOf("56583031 0000000e 03e9 0000 0001");  // its factory makes nothing

/// An event of type 1000 whose fields a test chooses, with the insides of `Event` laid open.
struct ProbeEvent : Varnex::Event {
    using Action = std::function<void(ProbeEvent&)>;
    explicit ProbeEvent(Action fields = nullptr) : writes(std::move(fields)) {}

    static Varnex::Event* create() { return new ProbeEvent; }
    static inline Varnex::EventType _type{"ProbeEvent", 1000, &ProbeEvent::create};
    static inline Varnex::EventType unmade{"Unmade", 1001, []() -> Event* { return nullptr; }};
    static inline Varnex::EventType poor{"Poor", 1002, []() -> Event* { throw std::bad_alloc(); }};
    [[nodiscard]] Varnex::EventType* type() const override { return typed ? &_type : nullptr; }

    using Event::_buffer, Event::addData, Event::addField, Event::getField;
    void addField(unsigned long long value) { addFieldUInt64(value); }
    void getField(unsigned long long& value) { getFieldUInt64(value); }
    void takeHeader() { Event::getFields(); }

    /// What `take` gives on these fields, and the bytes that it took.
    template <class Read>
    auto readFields(const std::string& fields, Read take) {
        std::vector<char> block(fields.begin(), fields.end());
        _buffer = _pos = block.data();
        _size = static_cast<int>(fields.size());
        const auto value = take(*this);
        return std::pair(value, static_cast<std::size_t>(_pos - block.data()));
    }

    static inline Action reads = &ProbeEvent::takeHeader;
    Action writes;
    bool typed = true, writesHeader = true;

protected:
    void addFields() override {
        if (writesHeader) Event::addFields();
        if (writes) writes(*this);
    }
    void getFields() override { reads(*this); }
};

/// Bytes of the largest allocation since a test set it to 0; with a sanitizer only of single objects and strings.
extern std::atomic<std::size_t> largestAllocation;
