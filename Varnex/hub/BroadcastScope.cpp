#include <Varnex/hub/BroadcastScope.h>

namespace Varnex {

thread_local BroadcastScope* BroadcastScope::current_ = nullptr;

QueuedMessage BroadcastScope::messageOf(const void* data, int size) {
    if (current_ == nullptr) return {data, size};
    if (current_->data_ != data || current_->message_.size != size) {
        current_->data_ = data;
        current_->message_ = {data, size};
    }
    return current_->message_;
}

}  // namespace Varnex
