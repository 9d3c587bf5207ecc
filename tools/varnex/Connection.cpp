#include "Connection.h"

#include "Endpoint.h"
#include "LibraryMessages.h"

#include <exception>
#include <utility>

namespace VarnexTool {

namespace {

constexpr std::size_t kMaxPendingBytes = 1 << 16;

}  // namespace

Connection::Connection(std::unique_ptr<Varnex::Client> client, EventLog& log, std::function<void()> onEnd)
    : log_(log),
      onEnd_(std::move(onEnd)),
      peer_(Endpoint::of(client->getRemoteAddress()).text()),
      communicator_(client.release(), true),
      reader_(&communicator_),
      thread_(this, &Connection::main) {}

Connection::~Connection() {
    stop();
}

void Connection::stop() {
    if (!stopping_.exchange(true)) communicator_.breakWait();
}

int Connection::main() {
    try {
        readAll();
    } catch (const std::exception& error) {
        EventLog::note(peer_ + " dropped: " + error.what());
    }
    ended_ = true;
    onEnd_();
    return 0;
}

void Connection::readAll() {
    std::string lines;
    while (!stopping_ && readOne(lines)) {
        if (lines.size() >= kMaxPendingBytes) log_.write(lines);
    }
    log_.write(lines);
}

/// Before it waits for the peer it writes what has come so far.
bool Connection::readOne(std::string& lines) {
    using Status = Varnex::EventReader::Status;
    auto result = reader_.read(0);
    if (result.status == Status::TimedOut) {
        log_.write(lines);
        result = reader_.read();
    }
    if (result.status == Status::Event) return log_.take(*result.event, peer_, lines);
    if (result.status != Status::Woken) log_.write(lines);
    return treat(result);
}

/// What is no event. False when the connection is over.
bool Connection::treat(const Varnex::EventReader::Result& result) const {
    using Status = Varnex::EventReader::Status;
    switch (result.status) {
        case Status::Unknown:
            EventLog::note(peer_ + " sent an event of unknown type " + std::to_string(result.typeID) + ", " +
                           std::to_string(result.length) + " bytes skipped");
            return true;
        case Status::Closed:
            EventLog::note(peer_ + " closed");
            return false;
        case Status::Broken:
            EventLog::note(peer_ + " broken: " + withLibraryMessage(result.reason));
            return false;
        default:
            return !stopping_;
    }
}

}  // namespace VarnexTool
