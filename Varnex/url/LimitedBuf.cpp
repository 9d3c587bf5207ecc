#include <Varnex/url/LimitedBuf.h>

#include <Varnex/url/Quietly.h>
#include <Varnex/url/URLPolicy.h>

#include <algorithm>
#include <utility>

namespace Varnex {

LimitedBuf::LimitedBuf(std::unique_ptr<std::streambuf> source, long long limit)
    : source_(std::move(source)), left_(limit) {}

LimitedBuf::~LimitedBuf() = default;

/// Damage is met again by `checkEnd`, which keeps what came before it.
std::streamsize LimitedBuf::receive(char* s, std::streamsize n) {
    const auto wanted = std::min<std::streamsize>(n, left_);
    const std::streamsize got = quietly([&] { return source_->sgetn(s, wanted); }, std::streamsize{0});
    left_ -= got;
    return got;
}

void LimitedBuf::checkEnd() {
    const bool isMore = !traits_type::eq_int_type(source_->sgetc(), traits_type::eof());
    if (left_ == 0 && isMore) URLPolicy::refuseSize();
}

}  // namespace Varnex
