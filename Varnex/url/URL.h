#pragma once

#include <Varnex/Export.h>
#include <Varnex/url/URLImpl.h>

#include <string_view>
#include <utility>

namespace Varnex {

/// A handle of a shared URL object, or of none. Copying shares, the last handle deletes. A handle and its copies belong
/// to one thread at a time.
class VARNEX_API URL {
public:
    URL() = default;
    /// Takes over the one reference that a new object has.
    explicit URL(URLImpl* adopted) : impl_(adopted) {}
    URL(const URL& other) : URL(share(other.impl_)) {}
    URL(URL&& other) noexcept : impl_(std::exchange(other.impl_, nullptr)) {}
    URL& operator=(URL other) noexcept {
        std::swap(impl_, other.impl_);
        return *this;
    }
    ~URL();

    /// A further reference to an object that somebody else keeps, such as `URLFile::_cwd`.
    [[nodiscard]] static URL share(const URLImpl& impl) { return share(&impl); }

    /// `URLImpl::create` with a handle: what `text` stands for where `base` is the base. An empty `base`: the working
    /// directory that the process was started in. Throws `URLImpl::Exception`; empty where `create` gives null.
    [[nodiscard]] static URL resolve(const URL& base, const std::string& text);

    /// Whether `text` keeps strictly to the grammar of RFC 3986: a URL, or a relative reference. For tools: the library
    /// itself takes any text.
    [[nodiscard]] static bool isWellFormed(std::string_view text);

    [[nodiscard]] URLImpl* get() const { return impl_; }
    URLImpl* operator->() const { return impl_; }
    URLImpl& operator*() const { return *impl_; }
    explicit operator bool() const { return impl_ != nullptr; }

private:
    static URL share(const URLImpl* impl);

    URLImpl* impl_ = nullptr;
};

}  // namespace Varnex
