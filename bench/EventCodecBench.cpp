// Serialising and parsing one event in memory: nanoseconds and allocations.
#include "AllocationCounter.h"

#include <Varnex/events/EventBatch.h>
#include <Varnex/events/EventReader.h>
#include <Varnex/events/TranslationRotationEvent.h>
#include <Varnex/transport/Receiver.h>
#include <Varnex/transport/Sender.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

namespace {

/// Takes everything and keeps nothing.
class NullSender : public Varnex::Sender {
public:
    using Sender::send;
    bool close() override { return true; }
    bool send(const void* data, int&) override {
        benchmark::DoNotOptimize(data);
        return true;
    }
};

/// Delivers the same bytes again and again.
class RepeatingReceiver : public Varnex::Receiver {
public:
    RepeatingReceiver(const char* bytes, int size) : bytes_(bytes, static_cast<std::size_t>(size)) {}
    bool close() override { return true; }
    bool receive(void* data, int& n) override {
        n = std::min(n, static_cast<int>(bytes_.size() - position_));
        std::memcpy(data, bytes_.data() + position_, static_cast<std::size_t>(n));
        position_ = (position_ + static_cast<std::size_t>(n)) % bytes_.size();
        return true;
    }
    bool waitForData() override { return true; }
    int waitForData(int) override { return WaitData; }
    void breakWait() override {}
    bool dataAvail(int& n) override {
        n = static_cast<int>(bytes_.size());
        return true;
    }

private:
    std::string bytes_;
    std::size_t position_ = 0;
};

/// The handle is longer than a string keeps without an allocation.
Varnex::TranslationRotationEvent makeEvent() {
    Varnex::TranslationRotationEvent event("laboratory/tracker-2/right-hand", true, false);
    event.set(1, 2, 3, 0, 0, 0, 1);
    return event;
}

void serialiseAndSend(benchmark::State& state) {
    auto event = makeEvent();
    NullSender sender;
    const AllocationReport report(state);
    for (auto _ : state) benchmark::DoNotOptimize(event.send(&sender));
}
BENCHMARK(serialiseAndSend);

void serialiseIntoBatch(benchmark::State& state) {
    auto event = makeEvent();
    Varnex::EventBatch batch;
    batch.add(event);
    const AllocationReport report(state);
    for (auto _ : state) {
        batch.clear();
        benchmark::DoNotOptimize(batch.add(event));
    }
}
BENCHMARK(serialiseIntoBatch);

void parseFromMemory(benchmark::State& state) {
    auto event = makeEvent();
    Varnex::EventBatch bytes;
    bytes.add(event);
    const AllocationReport report(state);
    for (auto _ : state) {
        Varnex::Event* parsed = nullptr;
        Varnex::Event::parse(bytes.getData(), bytes.getSize(), parsed);
        delete parsed;
    }
}
BENCHMARK(parseFromMemory);

void receiveFromReceiver(benchmark::State& state) {
    auto event = makeEvent();
    Varnex::EventBatch bytes;
    bytes.add(event);
    RepeatingReceiver receiver(bytes.getData(), bytes.getSize());
    const AllocationReport report(state);
    for (auto _ : state) {
        Varnex::Event* parsed = nullptr;
        Varnex::Event::receive(&receiver, parsed);
        delete parsed;
    }
}
BENCHMARK(receiveFromReceiver);

void readWithEventReader(benchmark::State& state) {
    auto event = makeEvent();
    Varnex::EventBatch bytes;
    bytes.add(event);
    RepeatingReceiver receiver(bytes.getData(), bytes.getSize());
    Varnex::EventReader reader(&receiver);
    benchmark::DoNotOptimize(reader.read());
    const AllocationReport report(state);
    for (auto _ : state) benchmark::DoNotOptimize(reader.read());
}
BENCHMARK(readWithEventReader);

}  // namespace

BENCHMARK_MAIN();
