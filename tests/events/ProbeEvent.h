#pragma once

#include <tests/events/Wire.h>

#include <functional>

/// An event of type 1000 whose fields a test chooses, with the insides of `Event` laid open.
class ProbeEvent : public Varnex::Event {
public:
    using Action = std::function<void(ProbeEvent&)>;

    explicit ProbeEvent(Action write = nullptr) : write_(std::move(write)) {}

    static Varnex::Event* create() { return createsNothing ? nullptr : new ProbeEvent; }
    static inline Varnex::EventType _type{"ProbeEvent", 1000, &ProbeEvent::create};
    [[nodiscard]] Varnex::EventType* type() const override { return typed ? &_type : nullptr; }

    static inline bool createsNothing = false;
    static inline bool readsHeader = true;
    bool typed = true;
    bool writesHeader = true;

    using Event::_buffer;
    using Event::addData;
    using Event::addField;
    using Event::addFieldUInt64;
    using Event::getData;
    using Event::getField;
    using Event::getFieldUInt64;

    /// What `action` gives on an event with these fields, and the bytes that it took.
    template <class Action>
    std::string readFields(const std::string& fields, Action action) {
        const auto block = exactBlock(fields);
        _buffer = _pos = block.get();
        _size = static_cast<int>(fields.size());
        const std::string result = action(*this);
        const auto taken = _pos - _buffer;
        _buffer = _pos = nullptr;
        return result + "@" + std::to_string(taken);
    }

protected:
    void addFields() override {
        if (writesHeader) Event::addFields();
        if (write_) write_(*this);
    }
    void getFields() override {
        if (readsHeader) Event::getFields();
    }

private:
    Action write_;
};
