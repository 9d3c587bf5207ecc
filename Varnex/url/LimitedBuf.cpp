#include <Varnex/url/LimitedBuf.h>

#include <Varnex/url/URLPolicy.h>

#include <algorithm>
#include <utility>

namespace Varnex {

LimitedBuf::LimitedBuf(std::unique_ptr<std::streambuf> source, long long limit)
    : source_(std::move(source)), left_(limit) {}

LimitedBuf::~LimitedBuf() = default;

std::streamsize LimitedBuf::receive(char* s, std::streamsize n) {
    const std::streamsize got = source_->sgetn(s, std::min<std::streamsize>(n, left_));
    left_ -= got;
    return got;
}

void LimitedBuf::checkEnd() {
    if (left_ == 0 && !traits_type::eq_int_type(source_->sgetc(), traits_type::eof())) URLPolicy::refuseSize();
}

}  // namespace Varnex
