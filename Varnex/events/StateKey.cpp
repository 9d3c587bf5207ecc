#include <Varnex/events/StateKey.h>

#include <Varnex/events/BigEndian.h>
#include <Varnex/events/EventHeader.h>
#include <Varnex/events/HandleEvent.h>

#include <Zendro/Mutex.h>

#include <cstring>
#include <map>
#include <memory>

namespace Varnex {

namespace {

constexpr std::size_t kCountSize = 2;  // of the handle, the first field

/// Whether events of this type begin with a handle. Asks the class once.
bool hasHandle(short typeID) {
    static Zendro::Mutex mutex;
    static std::map<short, bool> known;
    const Zendro::MutexLock lock(mutex);
    const auto found = known.find(typeID);
    if (found != known.end()) return found->second;
    const EventType* const type = EventType::findType(typeID);
    if (type == nullptr) return false;
    const std::unique_ptr<Event> event(type->create());
    return known[typeID] = dynamic_cast<const HandleEvent*>(event.get()) != nullptr;
}

}  // namespace

std::optional<std::string> stateKeyOf(const void* data, int size) {
    const auto* const bytes = static_cast<const char*>(data);
    constexpr std::size_t kHandleOffset = Event::kHeaderSize + kCountSize;
    const auto length = static_cast<std::size_t>(size < 0 ? 0 : size);
    if (length < kHandleOffset || std::memcmp(bytes, "VX01", kMagicSize) != 0) return {};
    if (loadBigEndian<std::uint32_t>(bytes + kLengthOffset) != length) return {};
    if (!hasHandle(static_cast<short>(loadBigEndian<std::uint16_t>(bytes + kTypeOffset)))) return {};
    const std::size_t count = loadBigEndian<std::uint16_t>(bytes + Event::kHeaderSize);
    if (count > length - kHandleOffset) return {};
    return std::string(bytes + kTypeOffset, 2).append(bytes + kHandleOffset, count);
}

}  // namespace Varnex
