#include <Varnex/events/TranslationEvent.h>
#include <Varnex/hub/SendQueue.h>
#include <tests/hub/HubFixture.h>
#include <tests/support/EventWire.h>

#include <map>
#include <random>

using Varnex::Chunk;
using Varnex::SendPolicy;
using Varnex::SendQueue;

/// Sends at most `bytes`, whole messages or parts of them, as a connection would.
static void fly(SendQueue& queue, std::string& wire, std::size_t bytes, const std::function<void()>& meanwhile) {
    Chunk chunks[64];
    const int count = queue.next(chunks, 64);
    std::string offered;
    for (int i = 0; i < count; ++i)
        offered.append(static_cast<const char*>(chunks[i].data), std::size_t(chunks[i].size));
    if (count > 0) meanwhile();
    queue.took(static_cast<int>(std::min(bytes, offered.size())));
    wire += offered.substr(0, bytes);
}

TEST(SendQueueTest, TheNewestStateOfEachObjectSurvivesWhateverTheConnectionTakes) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        std::minstd_rand random(seed);
        SendQueue queue(
            {.mode = SendPolicy::Queue, .whenFull = SendPolicy::KeepNewest, .maxBytes = 0, .maxMessages = 9});
        std::map<std::string, unsigned long long> newest, seen;
        std::string wire;
        unsigned long long pushed = 0;
        const auto pushEvent = [&](Varnex::Event&& event) {
            const std::string bytes = wireOf(event);
            queue.push({bytes.data(), static_cast<int>(bytes.size())});
        };
        const auto push = [&] {
            Varnex::TranslationEvent state(std::string(1 + random() % 4, 'k').c_str());
            state.setValue(newest[state.getHandle()] = ++pushed);
            pushEvent(std::move(state));
        };
        for (int i = 0; i < 2; ++i) pushEvent(Varnex::MessageEvent());  // no object's state: never replaced
        for (int i = 0; i < 200; ++i) {
            push();
            if (random() % 8 == 0)
                fly(queue, wire, random() % 3 * (random() % 150), [&] {
                    if (queue.getCounters().waiting.messages < 9) push();
                });
        }
        fly(queue, wire, ~std::size_t{0}, [] {});
        std::istringstream stream(wire);
        int messages = 0;
        for (Varnex::Event* raw = nullptr; Varnex::Event::receive(stream, raw);) {
            const std::unique_ptr<Varnex::Event> owner(raw);
            const auto* const state = dynamic_cast<Varnex::TranslationEvent*>(raw);
            if (state == nullptr && ++messages) continue;
            EXPECT_LT(seen[state->getHandle()], state->getValue());  // each object's states in order
            seen[state->getHandle()] = state->getValue();
        }
        EXPECT_TRUE(seen == newest && messages == 2) << "seed " << seed;
        const auto now = queue.getCounters();
        EXPECT_TRUE(now.waiting.messages == 0 && now.offered.messages == now.sent.messages + now.dropped.messages);
    }
}
