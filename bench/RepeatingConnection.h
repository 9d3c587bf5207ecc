#pragma once

#include <Varnex/transport/Communicator.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

/// A connection that delivers the same bytes again and again; it takes everything and keeps nothing.
class RepeatingConnection : public Varnex::Communicator {
public:
    explicit RepeatingConnection(std::string_view bytes) : bytes_(bytes) {}
    bool close() override { return true; }
    using Sender::send;
    bool send(const void* data, int&) override {
        benchmark::DoNotOptimize(data);
        return true;
    }
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
