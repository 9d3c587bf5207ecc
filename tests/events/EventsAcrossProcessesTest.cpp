#include <tests/events/Samples.h>
#include <tests/support/CapturedDiagnostics.h>

#include <Varnex/events/EventReader.h>
#include <Varnex/transport/BufferedCommunicator.h>
#include <Varnex/transport/Client.h>
#include <Varnex/transport/Exception.h>
#include <Varnex/transport/Server.h>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

using namespace Varnex;

namespace {

/// Sends one event of each class and returns the exit status of the process that does so.
int sendSamples(unsigned short port) {
    try {
        Client client;
        client.open("127.0.0.1", port);
        for (const Sample& sample : samples())
            if (!sample.event->send(&client)) return 2;
        return client.close() ? 0 : 3;
    } catch (const Exception&) {
        return 4;
    }
}

enum class Way { Plain, Buffered, Reader };

class EventsAcrossProcessesTest : public testing::TestWithParam<Way> {
protected:
    /// The next event, null at the end.
    static std::unique_ptr<Event> next(Receiver& receiver, EventReader& reader) {
        if (GetParam() == Way::Reader) return reader.read(10000).event;
        Event* event = nullptr;
        EXPECT_TRUE(Event::receive(&receiver, event));
        return std::unique_ptr<Event>(event);
    }
    const CapturedDiagnostics lines_;
};

INSTANTIATE_TEST_SUITE_P(Each, EventsAcrossProcessesTest, testing::Values(Way::Plain, Way::Buffered, Way::Reader));

TEST_P(EventsAcrossProcessesTest, EachEventArrivesWholeAndThenTheEnd) {
    Server server;
    server.open("127.0.0.1", 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) ::_exit(sendSamples(server.getLocalPort()));
    ASSERT_EQ(server.waitForClient(10000), Server::WaitClient);
    const std::unique_ptr<Client> connection(server.getClient());
    BufferedCommunicator buffered(connection.get());
    Receiver& receiver = GetParam() == Way::Plain ? static_cast<Receiver&>(*connection) : buffered;
    EventReader reader(&receiver);
    for (const Sample& sample : samples()) {
        if (sample.wire.size() == 12 && GetParam() != Way::Reader) {
            // Without fields it comes only through the reader: here the next event's header stays where it is.
            Event* none = nullptr;
            EXPECT_FALSE(Event::receive(&receiver, none));
            continue;
        }
        const auto event = next(receiver, reader);
        ASSERT_NE(event, nullptr) << sample.name;
        EXPECT_EQ(sample.tell(*event), sample.told);
        EXPECT_EQ(hexOf(wireOf(*event)), hexOf(sample.wire));
    }
    EXPECT_EQ(next(receiver, reader), nullptr);
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

}  // namespace
