#pragma once

#include <Varnex/transport/Communicator.h>

#include <algorithm>
#include <string>
#include <vector>

/// Receives `bytes` in pieces of `pieceSizes` (the last one repeats; none: whole), then the end of the stream, and
/// records what is sent, taking at most `takeAtMost` bytes a call. Calls that fail are numbered from 1; 0: none.
struct ScriptedCommunicator : Varnex::Communicator {
    std::string bytes, taken;
    std::vector<std::size_t> pieceSizes;
    int takeAtMost = -1;  ///< -1: everything
    int failReceive = 0, failWait = 0, failSend = 0;
    bool takesZero = false;  ///< whether a receive of 0 bytes succeeds
    bool stalls = false;     ///< instead of the end of the stream, waits time out and receives fail
    int receives = 0, waits = 0, sendCalls = 0;
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
    bool waitForData() override { return waitForData(-1) == WaitData; }
    int waitForData(int) override {
        if (++waits == failWait) return WaitFailed;
        if (breaks > 0) return --breaks, WaitBroken;
        return stalls && bytes.empty() ? WaitTimedOut : WaitData;
    }
    void breakWait() override { ++breaks; }
    bool dataAvail(int& n) override { return n = static_cast<int>(bytes.size()), !closed; }

    using Sender::send;
    bool send(const void* data, int& n) override {
        if (++sendCalls == failSend) return n = 0, false;
        if (takeAtMost >= 0) n = std::min(n, takeAtMost);
        taken.append(static_cast<const char*>(data), static_cast<std::size_t>(n));
        return true;
    }
    /// All bytes sent so far.
    std::string sent() const { return taken; }
};

using ScriptedReceiver = ScriptedCommunicator;
using ScriptedSender = ScriptedCommunicator;
