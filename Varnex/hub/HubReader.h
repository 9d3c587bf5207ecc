#pragma once

#include <Varnex/events/EventReader.h>
#include <Varnex/hub/MultiCommunicator.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace Varnex {

class BlockReceiver;

/// The consumer of a hub: hands out the events of all connections, one by one.
///
/// A connection that sent part of an event holds up nobody; the rest is awaited by the hub. One whose stream ends or
/// cannot be read on is dropped from the hub, which deletes it; nothing else need be done. The connections take turns,
/// a block of some 64 KiB each, so nobody else may read from them. Of a datagram channel each datagram is one event;
/// what is none is skipped, after an ERROR line. One thread; the hub outlives the reader.
///
///     HubReader reader(hub);
///     for (auto news = reader.read(); news.what != HubReader::What::Woken; news = reader.read())
///         if (news.event) handle(*news.event, news.connection);
class VARNEX_API HubReader {
public:
    enum class What {
        Event,    ///< an event
        Unknown,  ///< an event was skipped: its type is not registered here
        Closed,   ///< the peer ended; the connection is gone
        Broken,   ///< it sent what is no event; the connection is gone
        Woken     ///< `MultiCommunicator::breakWait`
    };
    struct News {
        What what = What::Woken;
        std::unique_ptr<Varnex::Event> event;  ///< with `Event` only
        /// With `Closed`, `Broken` and `setDeleteLost` only to compare with.
        Communicator* connection = nullptr;
        unsigned long long number = 0;  ///< of the connection, see `MultiCommunicator::ConnectionStatus`
        std::string reason;             ///< with `Broken`: why
        short typeID = -1;              ///< with `Event` and `Unknown`
        std::size_t length = 0;         ///< bytes of it, header included
    };

    explicit HubReader(MultiCommunicator& hub);
    ~HubReader();

    /// Waits for the next event of any connection, or for what became of one.
    [[nodiscard]] News read();

    /// The longest event, for connections whose first bytes are still to come; 0: no limit. At first that of
    /// `Event::setMaxLength`.
    void setMaxLength(unsigned int bytes) { maxLength_ = bytes; }

    /// Keep the bytes of events of unknown types too, as a relay wants. For connections whose first bytes are still to
    /// come; off at first.
    void setKeepUnknown(bool on) { keepUnknown_ = on; }

    /// What was received of the event read last, header included; valid until the next `read`. Empty after an unknown
    /// one that was not to be kept, and after everything that is no event.
    [[nodiscard]] std::string_view getBytes() const;

    /// Whether more of the same connection is at hand, so that `read` may not have to wait.
    [[nodiscard]] bool hasMore() const;

private:
    struct Source {
        Communicator* connection;
        EventReader reader;
        bool isDatagrams;
    };

    bool choose();
    [[nodiscard]] bool readChosen(News& news);
    void startReader(Source& source);
    void skipDatagram();
    void forgetGone();

    MultiCommunicator& hub_;
    std::unique_ptr<BlockReceiver> block_;  // empty whenever another connection has its turn
    unsigned int maxLength_ = Event::getMaxLength();
    bool keepUnknown_ = false;
    std::map<unsigned long long, Source> sources_;  // by number, which is never used again
    Source* chosen_ = nullptr;
    unsigned long long chosenNumber_ = 0;
};

}  // namespace Varnex
