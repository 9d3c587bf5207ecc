#include <Varnex/hub/HubReader.h>

#include <Varnex/hub/BlockReceiver.h>
#include <Varnex/hub/ConnectionEnd.h>
#include <Varnex/transport/Communicator.h>
#include <Varnex/transport/PrintLine.h>

#include <algorithm>
#include <set>
#include <utility>

namespace Varnex {

namespace {

HubReader::What whatOf(EventReader::Status status) {
    switch (status) {
        case EventReader::Status::Event:
            return HubReader::What::Event;
        case EventReader::Status::Unknown:
            return HubReader::What::Unknown;
        case EventReader::Status::Closed:
            return HubReader::What::Closed;
        default:
            return HubReader::What::Broken;
    }
}

}  // namespace

HubReader::HubReader(MultiCommunicator& hub) : hub_(hub), block_(std::make_unique<BlockReceiver>()) {}

HubReader::~HubReader() = default;

std::string_view HubReader::getBytes() const {
    return chosen_ == nullptr ? std::string_view() : chosen_->reader.getBytes();
}

bool HubReader::hasMore() const {
    return !block_->isEmpty();
}

HubReader::News HubReader::read() {
    News news;
    while (!readChosen(news))
        if (!choose()) break;
    return news;
}

/// Reads on from the connection at hand. False when it has nothing more for now.
bool HubReader::readChosen(News& news) {
    if (chosen_ == nullptr) return false;
    auto result = chosen_->reader.read(0);
    while (result.status == EventReader::Status::TimedOut && !block_->isEmpty()) result = chosen_->reader.read(0);
    if (result.status == EventReader::Status::Broken && chosen_->isDatagrams) skipDatagram();
    if (chosen_ == nullptr || result.status == EventReader::Status::TimedOut) {
        chosen_ = nullptr;
        return false;
    }
    news = {whatOf(result.status),    std::move(result.event), chosen_->connection, chosenNumber_,
            std::move(result.reason), result.typeID,           result.length};
    if (news.what == What::Closed || news.what == What::Broken) {
        chosen_ = nullptr;
        sources_.erase(chosenNumber_);
        hub_.dropNumber(news.number, news.what == What::Closed ? LostReason::PeerClosed : LostReason::ReceiveFailed);
    }
    return true;
}

/// Goes on to the next connection with data. False when woken.
bool HubReader::choose() {
    if (!hub_.waitForCommunicators()) return false;
    Communicator* connection = nullptr;
    hub_.receiveCommunicator(connection);
    chosenNumber_ = hub_.getCurrentNumber();
    if (chosenNumber_ == 0) return true;  // taken out of the hub meanwhile
    forgetGone();
    const bool isDatagrams = isDatagramChannel(connection);
    const auto [found, isNew] =
        sources_.try_emplace(chosenNumber_, Source{connection, EventReader(block_.get()), isDatagrams});
    chosen_ = &found->second;
    if (isNew || isDatagrams) startReader(*chosen_);
    block_->take(*connection, !isDatagrams);
    return true;
}

void HubReader::startReader(Source& source) {
    source.reader = EventReader(block_.get());
    source.reader.setMaxLength(maxLength_);
    source.reader.setKeepUnknown(keepUnknown_);
}

void HubReader::skipDatagram() {
    printError("ERROR: Got a datagram that is not one Varnex event");
    block_->clear();
    chosen_ = nullptr;
}

/// Connections that left the hub by another way; looked for only when there are many more than the hub has.
void HubReader::forgetGone() {
    constexpr std::size_t kSlack = 16;
    if (sources_.size() < 2 * static_cast<std::size_t>(hub_.getCount()) + kSlack) return;
    std::set<unsigned long long> present;
    for (const auto& each : hub_.getStatus()) present.insert(each.number);
    std::erase_if(sources_, [&](const auto& each) { return present.count(each.first) == 0; });
}

}  // namespace Varnex
