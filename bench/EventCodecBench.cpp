// Serialising and parsing one event in memory: nanoseconds and allocations.
#include "AllocationCounter.h"
#include "RepeatingConnection.h"

#include <Varnex/events/EventBatch.h>
#include <Varnex/events/EventReader.h>
#include <Varnex/events/TranslationRotationEvent.h>

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

namespace {

/// The handle is longer than a string keeps without an allocation.
Varnex::TranslationRotationEvent makeEvent() {
    Varnex::TranslationRotationEvent event("laboratory/tracker-2/right-hand", true, false);
    event.set(1, 2, 3, 0, 0, 0, 1);
    return event;
}

void serialiseAndSend(benchmark::State& state) {
    auto event = makeEvent();
    RepeatingConnection connection("");
    const AllocationReport report(state);
    for (auto _ : state) benchmark::DoNotOptimize(event.send(&connection));
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
    RepeatingConnection connection({bytes.getData(), static_cast<std::size_t>(bytes.getSize())});
    const AllocationReport report(state);
    for (auto _ : state) {
        Varnex::Event* parsed = nullptr;
        Varnex::Event::receive(&connection, parsed);
        delete parsed;
    }
}
BENCHMARK(receiveFromReceiver);

void readWithEventReader(benchmark::State& state) {
    auto event = makeEvent();
    Varnex::EventBatch bytes;
    bytes.add(event);
    RepeatingConnection connection({bytes.getData(), static_cast<std::size_t>(bytes.getSize())});
    Varnex::EventReader reader(&connection);
    benchmark::DoNotOptimize(reader.read());
    const AllocationReport report(state);
    for (auto _ : state) benchmark::DoNotOptimize(reader.read());
}
BENCHMARK(readWithEventReader);

}  // namespace

BENCHMARK_MAIN();
