#pragma once

#include <Zendro/Mutex.h>

#include <cstddef>
#include <list>
#include <memory>
#include <string>
#include <utility>

namespace Varnex {

class ZipHandler;

// Private to the library.

/// The archives that were used last, by the text of their URL. Any thread.
class ZipCache {
public:
    static constexpr std::size_t kDefaultCapacity = 4;
    /// Characters of a URL that is worth keeping: a longer one is an archive itself.
    static constexpr std::size_t kMaxKey = 4096;

    static ZipCache& instance();

    /// Null: not there.
    [[nodiscard]] std::shared_ptr<const ZipHandler> find(const std::string& url);
    void put(const std::string& url, std::shared_ptr<const ZipHandler> handler);
    /// 0 keeps none.
    void setCapacity(std::size_t archives);
    void clear();

private:
    using Entry = std::pair<std::string, std::shared_ptr<const ZipHandler>>;

    Zendro::Mutex mutex_;
    std::size_t capacity_ VARNEX_GUARDED_BY(mutex_) = kDefaultCapacity;
    std::list<Entry> entries_ VARNEX_GUARDED_BY(mutex_);  // the one used last first
};

}  // namespace Varnex
