#pragma once

#include <Varnex/hub/HubReader.h>

#include <Zendro/ObjectThread.h>

namespace VarnexTool {

/// Reads everything that a hub's connections send and throws it away, in a thread of its own, so that a program that
/// only sends does not fill them up. The hub is open and outlives it.
class EventSink {
public:
    explicit EventSink(Varnex::MultiCommunicator& hub) : hub_(hub), thread_(this, &EventSink::main) { thread_.start(); }
    ~EventSink() {
        hub_.breakWait();
        thread_.join();
    }
    EventSink(const EventSink&) = delete;
    EventSink& operator=(const EventSink&) = delete;

private:
    int main() {
        Varnex::HubReader reader(hub_);
        while (reader.read().what != Varnex::HubReader::What::Woken) {
        }
        return 0;
    }

    Varnex::MultiCommunicator& hub_;
    Zendro::ObjectThread<EventSink> thread_;  // last: it uses the other
};

}  // namespace VarnexTool
