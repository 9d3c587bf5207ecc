#pragma once

#include <tests/events/Wire.h>

#include <Varnex/events/HelloEvent.h>
#include <Varnex/events/MessageEvent.h>
#include <Varnex/events/RotationEvent.h>
#include <Varnex/events/ServerInfoEvent.h>
#include <Varnex/events/ServerInfoQueryEvent.h>
#include <Varnex/events/StatusEvent.h>
#include <Varnex/events/TrackedPointsEvent.h>
#include <Varnex/events/TranslationEvent.h>
#include <Varnex/events/TranslationRotationEvent.h>

#include <functional>
#include <vector>

/// One event of each class of the library, with its bytes and what its accessors tell once it was received.
struct Sample {
    const char* name;
    std::shared_ptr<Varnex::Event> event;
    std::string wire;
    std::function<std::string(const Varnex::Event&)> tell;
    const char* told;
    std::function<std::string(const Varnex::Event&)> wireOfCopies;
};

template <class... Values>
std::string inWords(const Values&... values) {
    std::ostringstream words;
    ((words << values << ' '), ...);
    return words.str().substr(0, words.str().size() - 1);
}

template <class T>
Sample sample(const char* name, const T& event, const char* hex, std::string (*tell)(const T&), const char* told) {
    const auto wireOfCopies = [](const Varnex::Event& e) {
        T copy(dynamic_cast<const T&>(e));
        const std::unique_ptr<Varnex::Event> assigned(T::create());
        dynamic_cast<T&>(*assigned) = copy;
        return wireOf(copy) + wireOf(*assigned);
    };
    const auto tellAny = [tell](const Varnex::Event& e) { return tell(dynamic_cast<const T&>(e)); };
    return {name, std::make_shared<T>(event), bytesOf(hex), tellAny, told, wireOfCopies};
}

/// A received greeting: those made here carry this machine's texts.
inline Varnex::HelloEvent receivedHello() {
    const auto event =
        parsed(bytesOf("56583031 00000028 0008 0000 0002 6d65 0000 0001 fffe 0006 7838365f3634"
                       "0004 4f532031 0002 7063"));
    return dynamic_cast<Varnex::HelloEvent&>(*event);
}

inline std::vector<Sample> samples() {
    using namespace Varnex;
    HandleEvent handle("h1");
    handle.setValue(0x0102030405060708);
    RotationEvent rotation("r", false, true);
    rotation.set(1, 0, -1, 0.5);
    ServerInfoEvent info;
    info.setStatus(-1);
    info.setId(-25536);
    info.setPort(65535);
    info.setMask(0xffffff00);
    info.setHostAddress("127.0.0.1");
    info.setHostName("pc");
    ServerInfoQueryEvent query;
    query.setMask(-256);
    query.setId(2);
    TranslationEvent translation("h", true, false);
    translation.set(1, 2, 3);
    StatusEvent status("a");
    status.setStatus(7);
    TranslationRotationEvent both("b", true, true);
    both.set(1, 2, 3, 0, 0, 0, 1);
    TrackedPointsEvent points("p");
    points.push(1, 2, 3, 4, 5, -6);
    points.push(0, 0, 0, 0.5, 0x01020304, 7);
    return {
        sample<Event>(
            "Event", Event(), "56583031 0000000c 0000 0000", [](const Event&) { return inWords(""); }, ""),
        sample<HandleEvent>(
            "Handle", handle, "56583031 00000018 0014 0000 0002 6831 0102030405060708",
            [](const HandleEvent& e) { return inWords(e.getHandle(), e.getValue()); }, "h1 72623859790382856"),
        sample<MessageEvent>(
            "Message", MessageEvent(3, "hi"), "56583031 00000012 000a 0000 0003 0002 6869",
            [](const MessageEvent& e) { return inWords(e.getCode(), e.getText()); }, "3 hi"),
        sample<RotationEvent>(
            "Rotation", rotation,
            "56583031 0000002b 0017 0000 0001 72 0000000000000000 0000 0001 3f800000 00000000 bf800000 3f000000",
            [](const RotationEvent& e) {
                const float* const v = e.getRotation();
                return inWords(e.getHandle(), e.getFlag1(), e.getFlag2(), v[0], v[1], v[2], v[3]);
            },
            "r 0 1 1 0 -1 0.5"),
        sample<ServerInfoEvent>(
            "ServerInfo", info, "56583031 00000025 0005 0000 ffff 9c40 ffff ffffff00 0009 3132372e302e302e31 0002 7063",
            [](const ServerInfoEvent& e) {
                return inWords(e.getStatus(), e.getId(), e.getPort(), e.getMask(), e.getHostAddress(), e.getHostName());
            },
            "-1 -25536 65535 -256 127.0.0.1 pc"),
        sample<ServerInfoQueryEvent>(
            "ServerInfoQuery", query, "56583031 00000012 0006 0000 ffffff00 0002",
            [](const ServerInfoQueryEvent& e) { return inWords(e.getMask(), e.getId()); }, "-256 2"),
        sample<TransformEvent>(
            "Transform", TransformEvent("t", true, false),
            "56583031 0000001b 0016 0000 0001 74 0000000000000000 0001 0000",
            [](const TransformEvent& e) { return inWords(e.getHandle(), e.getFlag1(), e.getFlag2()); }, "t 1 0"),
        sample<TranslationEvent>(
            "Translation", translation,
            "56583031 00000027 0015 0000 0001 68 0000000000000000 0001 0000 3f800000 40000000 40400000",
            [](const TranslationEvent& e) {
                const float* const v = e.getTranslation();
                return inWords(e.getFlag1(), v[0], v[1], v[2]);
            },
            "1 1 2 3"),
        sample<StatusEvent>(
            "Status", status, "56583031 0000001b 0018 0000 0001 61 0000000000000000 00000007",
            [](const StatusEvent& e) { return inWords(e.getHandle(), e.getValue(), e.getStatus()); }, "a 0 7"),
        sample<TranslationRotationEvent>(
            "TranslationRotation", both,
            "56583031 00000037 0019 0000 0001 62 0000000000000000 0001 0001 3f800000 40000000 40400000"
            "00000000 00000000 00000000 3f800000",
            [](const TranslationRotationEvent& e) {
                const float *const t = e.getTranslation(), *const r = e.getRotation();
                return inWords(t[0], t[1], t[2], r[0], r[1], r[2], r[3]);
            },
            "1 2 3 0 0 0 1"),
        sample<TrackedPointsEvent>(
            "TrackedPoints", points,
            "56583031 0000004b 001a 0000 0001 70 0000000000000000 00000002"
            "3f800000 40000000 40400000 40800000 00000005 fffffffa"
            "00000000 00000000 00000000 3f000000 01020304 00000007",
            [](const TrackedPointsEvent& e) {
                const auto& p = e.getPoints().at(1);
                return inWords(e.getCount(), e.getPoints().size(), e.getPoints()[0].flags, p.x, p.w, p.id, p.flags);
            },
            "2 2 -6 0 0.5 16909060 7"),
        sample<HelloEvent>(
            "Hello", receivedHello(),
            "56583031 00000028 0008 0000 0002 6d65 0000 0001 fffe 0006 7838365f3634 0004 4f532031 0002 7063",
            [](const HelloEvent& e) {
                return inWords(e.getName1(), e.getName2(), e.getNumber1(), e.getNumber2(), e.getSysText1(),
                               e.getSysText2(), e.getSysText3());
            },
            "me  1 -2 x86_64 OS 1 pc"),
    };
}
