#include "Relay.h"

#include "Failure.h"

namespace VarnexTool {

Relay::Relay(LoggedHub<Varnex::MultiServer>& hub, StatusLine& line, StopWatcher& stop, const Options& options)
    : hub_(hub),
      line_(line),
      stop_(stop),
      options_(options),
      reader_(hub),
      meter_(hub, hub.peers),
      statusThread_(this, &Relay::showStatus) {
    reader_.setKeepUnknown(true);
}

void Relay::run() {
    if (!options_.quiet && !statusThread_.start()) throw Failure("cannot start a thread");
    while (!stop_.isStopped()) pass(reader_.read());
    statusThread_.join();
    if (!options_.quiet && !outputGone_) showOne();
}

void Relay::pass(const Varnex::HubReader::News& news) {
    using What = Varnex::HubReader::What;
    if (news.what == What::Broken) hub_.peers.brokeOff(news.connection, news.reason);
    if (news.what != What::Event && news.what != What::Unknown) return;
    hub_.peers.countEvent(news.connection);
    const auto bytes = reader_.getBytes();
    int n = static_cast<int>(bytes.size());
    hub_.sendToOthers(news.connection, bytes.data(), n);
}

int Relay::showStatus() {
    using namespace std::chrono;
    const auto pause = duration_cast<steady_clock::duration>(duration<double>(options_.statusSeconds));
    for (auto next = steady_clock::now() + pause; !outputGone_ && stop_.sleepUntil(next); next += pause) showOne();
    return 0;
}

void Relay::showOne() {
    const HubStatus status = meter_.take();
    if (line_.show(options_.json ? status.json() : status.text())) return;
    outputGone_ = true;
    stop_.stop();
}

}  // namespace VarnexTool
