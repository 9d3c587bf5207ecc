#include <Varnex/url/ConnectionDelegate.h>

#include <algorithm>
#include <utility>

namespace Varnex {

void ConnectionDelegate::didReceiveResponse(long long contentLength, std::string mimeType) {
    responded_ = true;
    succeeded_ = true;
    gotAnswer_ = true;
    contentLength_ = contentLength;
    mimeType_ = std::move(mimeType);
    lent_ = 0;
    dropData();
}

bool ConnectionDelegate::didReceiveData(std::string_view chunk) {
    if (!data_.empty()) return false;
    lendTo(chunk);
    data_.assign(chunk.begin(), chunk.end());
    return true;
}

void ConnectionDelegate::didFailWithError(std::string reason) {
    succeeded_ = false;
    gotAnswer_ = true;
    reason_ = std::move(reason);
}

void ConnectionDelegate::didFinishLoading() {
    finished_ = true;
}

void ConnectionDelegate::lend(char* s, std::streamsize n) {
    lentTo_ = s;
    lentSize_ = n;
    lent_ = 0;
    std::string_view waiting(data_.data() + offset_, data_.size() - offset_);
    lendTo(waiting);
    offset_ = data_.size() - waiting.size();
    if (waiting.empty()) dropData();
}

std::streamsize ConnectionDelegate::take() {
    lentTo_ = nullptr;
    lentSize_ = 0;
    return std::exchange(lent_, 0);
}

/// Takes what fits off the front of `chunk`.
void ConnectionDelegate::lendTo(std::string_view& chunk) {
    const auto n = std::min(chunk.size(), static_cast<std::size_t>(lentSize_ - lent_));
    if (n > 0) chunk.copy(lentTo_ + lent_, n);
    lent_ += static_cast<std::streamsize>(n);
    chunk.remove_prefix(n);
}

void ConnectionDelegate::dropData() {
    data_.clear();
    offset_ = 0;
}

}  // namespace Varnex
