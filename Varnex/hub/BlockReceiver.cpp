#include <Varnex/hub/BlockReceiver.h>

#include <Varnex/transport/PrintLine.h>

#include <algorithm>
#include <cstring>

namespace Varnex {

void BlockReceiver::take(Receiver& from, bool hasEnd) {
    int n = kBlockSize;
    bool received = false;
    try {
        received = from.receive(block_.get(), n) && n >= 0 && n <= kBlockSize;
    } catch (...) {
        printCaughtException();
    }
    begin_ = 0;
    end_ = received ? n : 0;
    atEnd_ = !received ? End::Failed : n == 0 && hasEnd ? End::OfStream : End::None;
}

bool BlockReceiver::receive(void* data, int& n) {
    if (atEnd_ == End::Failed) return false;
    n = std::min(n, end_ - begin_);
    std::memcpy(data, block_.get() + begin_, static_cast<std::size_t>(n));
    begin_ += n;
    return true;
}

int BlockReceiver::waitForData(int) {
    return begin_ < end_ || atEnd_ != End::None ? WaitData : WaitTimedOut;
}

bool BlockReceiver::dataAvail(int& n) {
    n = end_ - begin_;
    return true;
}

}  // namespace Varnex
