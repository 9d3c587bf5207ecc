#pragma once

#include <Varnex/transport/Communicator.h>

#include <algorithm>
#include <string>
#include <vector>

/// Receives `bytes` in pieces of `pieceSizes` (the last one repeats; none: whole), then the end of the stream.
template <class Base>
struct ReceiverScript : Base {
    std::string bytes;
    std::vector<std::size_t> pieceSizes;
    int failReceive = 0;     ///< number of the receive call that fails, from 1; 0: none
    int failWait = 0;        ///< the same for waits
    bool takesZero = false;  ///< whether a receive of 0 bytes succeeds
    bool stalls = false;     ///< instead of the end of the stream, waits time out and receives fail
    int receives = 0, waits = 0;
    int breaks = 0;  ///< pending wake-ups
    bool closed = false;

    bool close() override { return closed = true; }
    bool receive(void* data, int& n) override {
        if (++receives == failReceive || n < 0 || (n == 0 && !takesZero) || (stalls && bytes.empty())) return false;
        const std::size_t piece = pieceSizes.empty() ? bytes.size() : pieceSizes.front();
        if (pieceSizes.size() > 1) pieceSizes.erase(pieceSizes.begin());
        n = static_cast<int>(bytes.copy(static_cast<char*>(data), std::min(static_cast<std::size_t>(n), piece)));
        bytes.erase(0, static_cast<std::size_t>(n));
        return true;
    }

    bool waitForData() override { return waitForData(-1) == this->WaitData; }
    int waitForData(int) override {
        if (++waits == failWait) return this->WaitFailed;
        if (breaks > 0) return --breaks, this->WaitBroken;
        return stalls && bytes.empty() ? this->WaitTimedOut : this->WaitData;
    }
    void breakWait() override { ++breaks; }
    bool dataAvail(int& n) override { return n = static_cast<int>(bytes.size()), !closed; }
};

/// Records what is sent, taking at most `takeAtMost` bytes a call.
template <class Base>
struct SenderScript : Base {
    std::vector<std::string> sends;
    int takeAtMost = -1;  ///< -1: everything
    int failSend = 0;     ///< number of the send call that fails, from 1; 0: none
    int sendCalls = 0;

    using Base::send;
    bool close() override {
        if constexpr (requires { this->bytes; }) return Base::close();
        return true;
    }
    bool send(const void* data, int& n) override {
        if (++sendCalls == failSend) return n = 0, false;
        if (takeAtMost >= 0) n = std::min(n, takeAtMost);
        sends.emplace_back(static_cast<const char*>(data), static_cast<std::size_t>(n));
        return true;
    }
    /// All bytes sent so far.
    std::string sent() const {
        std::string all;
        for (const auto& one : sends) all += one;
        return all;
    }
};

using ScriptedReceiver = ReceiverScript<Varnex::Receiver>;
using ScriptedSender = SenderScript<Varnex::Sender>;
using ScriptedCommunicator = SenderScript<ReceiverScript<Varnex::Communicator>>;
