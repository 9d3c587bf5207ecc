#include <Varnex/url/LoadGuard.h>

#include <Varnex/url/URL.h>
#include <Varnex/url/URLImpl.h>

#include <utility>

namespace Varnex {

LoadGuard::LoadGuard(std::shared_ptr<const URLPolicy> policy, bool hasProxy)
    : policy_(std::move(policy)), checksAddresses_(!hasProxy) {}

template <class Check>
bool LoadGuard::allows(Check check) try {
    check();
    return true;
} catch (const URLImpl::Exception&) {
    refusal_ = std::current_exception();
    return false;
}

bool LoadGuard::allowsUrl(const std::string& url) {
    return allows([&] {
        if (url == allowed_) return;
        const URL parsed = URL::resolve({}, url);
        if (!parsed) throw URLImpl::Exception("");
        policy_->check(*parsed);
        allowed_ = url;
    });
}

bool LoadGuard::allowsAddress(const sockaddr& address) {
    return !checksAddresses_ || allows([&] { policy_->checkAddress(address); });
}

bool LoadGuard::allowsAddress(const std::string& address) {
    return !checksAddresses_ || allows([&] { policy_->checkHost(address); });
}

void LoadGuard::raise() const {
    if (refusal_ != nullptr) std::rethrow_exception(refusal_);
}

}  // namespace Varnex
