#pragma once

#include <Varnex/transport/Receiver.h>

#include <memory>

namespace Varnex {

// Private to the library.

/// Gives one block of what a connection has received, and then nothing more until the next block is taken; so a reader
/// takes as much as there is in few system calls, but never keeps others waiting.
class BlockReceiver : public Receiver {
public:
    static constexpr int kBlockSize = 65536;

    BlockReceiver() : block_(std::make_unique_for_overwrite<char[]>(kBlockSize)) {}

    /// Takes a block from a connection that has data or is at its end; without `hasEnd`, nothing is just nothing.
    void take(Receiver& from, bool hasEnd);
    void clear() { begin_ = end_ = 0; }

    [[nodiscard]] bool isEmpty() const { return begin_ == end_; }

    bool close() override { return true; }
    bool receive(void* data, int& n) override;
    bool waitForData() override { return waitForData(0) == WaitData; }
    int waitForData(int ms) override;
    void breakWait() override {}
    bool dataAvail(int& n) override;

private:
    enum class End { None, OfStream, Failed };

    std::unique_ptr<char[]> block_;
    int begin_ = 0;
    int end_ = 0;
    End atEnd_ = End::None;
};

}  // namespace Varnex
