#pragma once

#include <Varnex/protocols/ProtocolHTTP.h>

#include <Zendro/Mutex.h>

#include <atomic>
#include <string>
#include <vector>

namespace Varnex {

// Private to the library.

/// The last entries of a web server's log, as HTML. Any thread.
class HtmlLog {
public:
    static constexpr std::size_t kMaxEntry = 16384;  ///< bytes; the rest of a longer one is left out

    /// Drops all entries; 0, or less: none is kept.
    void setSize(int entries) VARNEX_EXCLUDES(mutex_);
    [[nodiscard]] bool isOn() const { return isOn_; }

    void add(std::string entry) VARNEX_EXCLUDES(mutex_);
    void addRequest(const std::string& peer, const ProtocolHTTP::Request& request) VARNEX_EXCLUDES(mutex_);
    void addReply(const ProtocolHTTP::Reply& reply) VARNEX_EXCLUDES(mutex_);

    /// The page that shows them, the oldest first.
    [[nodiscard]] std::string createPage() const VARNEX_EXCLUDES(mutex_);

private:
    mutable Zendro::Mutex mutex_;
    std::vector<std::string> ring_ VARNEX_GUARDED_BY(mutex_);
    std::size_t next_ VARNEX_GUARDED_BY(mutex_) = 0;   // to be overwritten
    std::size_t count_ VARNEX_GUARDED_BY(mutex_) = 0;  // of entries
    std::atomic<bool> isOn_ = false;
};

}  // namespace Varnex
