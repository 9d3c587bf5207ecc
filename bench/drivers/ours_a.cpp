// One-way and ping-pong of small events between two processes. Sending: `Event::send`, or `EventBatch`. Receiving:
// `Event::receive`, or `EventReader`, or the latter with waits that spin before they sleep.
#include "a_common.hpp"

#include <Varnex/events/Event.h>
#include <Varnex/events/EventBatch.h>
#include <Varnex/events/EventReader.h>
#include <Varnex/transport/BufferedCommunicator.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Server.h>

#include <memory>
#include <string>
#include <string_view>

namespace {

/// A message of any size, as an application would define it.
class BlobEvent : public Varnex::Event {
public:
    static Varnex::Event* create() { return new BlobEvent; }
    static Varnex::EventType _type;
    Varnex::EventType* type() const override { return &_type; }

    std::string body;

protected:
    void addFields() override {
        Event::addFields();
        addField(body);
    }
    void getFields() override {
        Event::getFields();
        getField(body);
    }
};

Varnex::EventType BlobEvent::_type("BlobEvent", 1000, &BlobEvent::create);

/// How the present case receives.
struct Receiving {
    bool withReader = false;
    int spinUs = 0;
};
Receiving receiving;

/// Reads events from a connection and keeps the present one.
class Inbox {
public:
    void open(Varnex::Client* connection) {
        connection->setTcpNoDelay(true);
        connection->setSpinTime(receiving.spinUs);
        buffered_ = std::make_unique<Varnex::BufferedCommunicator>(connection);
        reader_ = std::make_unique<Varnex::EventReader>(buffered_.get());
    }
    std::string_view next() {
        Varnex::Event* event = nullptr;
        if (receiving.withReader)
            event = reader_->read().event.release();
        else
            bench::check(Varnex::Event::receive(buffered_.get(), event), "receive");
        bench::check(event != nullptr, "event");
        event_.reset(event);
        return static_cast<BlobEvent*>(event)->body;
    }

private:
    std::unique_ptr<Varnex::BufferedCommunicator> buffered_;
    std::unique_ptr<Varnex::EventReader> reader_;
    std::unique_ptr<Varnex::Event> event_;
};

struct Receiver {
    Varnex::Server server;
    std::unique_ptr<Varnex::Client> client;
    Inbox inbox;
    BlobEvent answer;

    std::string listen() {
        server.open("127.0.0.1", 0);
        return std::to_string(server.getLocalPort());
    }
    void accept() {
        client.reset(server.getClient());
        inbox.open(client.get());
    }
    std::string_view recv() { return inbox.next(); }
    void reply(const char* data, std::size_t n) {
        answer.body.assign(data, n);
        bench::check(answer.send(client.get()), "send");
    }
};

struct Sender {
    Varnex::Client client;
    Inbox inbox;
    BlobEvent event;

    void connect(const std::string& port) {
        client.open("127.0.0.1", static_cast<unsigned short>(std::stoi(port)));
        inbox.open(&client);
    }
    void send(const char* data, std::size_t n) {
        event.body.assign(data, n);
        bench::check(event.send(&client), "send");
    }
    void flush() {}
    std::string_view recv() { return inbox.next(); }
};

/// Sends as soon as a batch of a socket buffer's size is together.
struct BatchSender : Sender {
    static constexpr int kBatchBytes = 65536;
    Varnex::EventBatch batch;

    void send(const char* data, std::size_t n) {
        event.body.assign(data, n);
        bench::check(batch.add(event), "add");
        if (batch.getSize() >= kBatchBytes) flush();
    }
    void flush() { bench::check(batch.send(&client), "send"); }
};

template <class SenderType>
void oneway(const bench::JobA& job, const bench::Args& arguments, const char* peer, Receiving how) {
    receiving = how;
    for (const long size : job.sizes)
        if (job.do_oneway && arguments.want(peer)) bench::oneway<Receiver, SenderType>(peer, size, job.count);
}

void pingpong(const bench::JobA& job, const bench::Args& arguments, const char* peer, Receiving how) {
    receiving = how;
    for (const long size : job.sizes)
        if (job.do_pingpong && arguments.want(peer)) bench::pingpong<Receiver, Sender>(peer, size, job.pings);
}

}  // namespace

int main(int argc, char** argv) {
    const bench::Args arguments{argc, argv};
    bench::guard(240);
    const bench::JobA job(arguments);
    oneway<Sender>(job, arguments, "ours", {});
    oneway<BatchSender>(job, arguments, "ours-batch", {});
    oneway<BatchSender>(job, arguments, "ours-batch-reader", {.withReader = true});
    pingpong(job, arguments, "ours", {});
    pingpong(job, arguments, "ours-reader", {.withReader = true});
    pingpong(job, arguments, "ours-spin", {.withReader = true, .spinUs = 50});
}
