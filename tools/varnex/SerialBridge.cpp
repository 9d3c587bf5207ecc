#include "SerialBridge.h"

#include "Failure.h"
#include "LibraryMessages.h"

namespace VarnexTool {

namespace {

constexpr int kBlockSize = 4096;  // a serial line delivers no more at a time

}  // namespace

SerialBridge::SerialBridge(const Side& line, const Side& connection, StopWatcher& stop)
    : line_(line), connection_(connection), stop_(stop), thread_(this, &SerialBridge::carryFromLine) {}

std::string SerialBridge::run() {
    if (!thread_.start()) throw Failure("cannot start a thread");
    carry(connection_, line_);
    thread_.join();
    const Zendro::MutexLock lock(mutex_);
    return ended_;
}

int SerialBridge::carryFromLine() {
    carry(line_, connection_);
    return 0;
}

void SerialBridge::carry(const Side& from, const Side& to) {
    char block[kBlockSize];
    while (from.channel.waitForData()) {
        int n = kBlockSize;
        if (!from.channel.receive(block, n)) return end(withLibraryMessage(from.name + " failed"));
        if (n == 0) return end(from.name + " ended");
        if (!to.channel.send(block, n)) return end(withLibraryMessage(to.name + " takes nothing any more"));
    }
    if (!stop_.isStopped()) end(withLibraryMessage(from.name + " cannot be waited for"));
}

/// The first reason counts; what the other side then says only follows from it.
void SerialBridge::end(const std::string& why) {
    {
        const Zendro::MutexLock lock(mutex_);
        if (ended_.empty() && !stop_.isStopped()) ended_ = why;
    }
    stop_.stop();
}

}  // namespace VarnexTool
