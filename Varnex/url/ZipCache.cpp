#include <Varnex/url/ZipCache.h>

#include <Varnex/url/ZipHandler.h>

#include <algorithm>

namespace Varnex {

ZipCache& ZipCache::instance() {
    static ZipCache& cache = *new ZipCache;  // also for static objects that open URLs at the end of the process
    static const struct AtExit {
        ~AtExit() { cache.setCapacity(0); }
    } atExit;
    return cache;
}

std::shared_ptr<const ZipHandler> ZipCache::find(const std::string& url) {
    const Zendro::MutexLock lock(mutex_);
    const auto entry = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& e) { return e.first == url; });
    if (entry == entries_.end()) return nullptr;
    entries_.splice(entries_.begin(), entries_, entry);
    return entry->second;
}

void ZipCache::put(const std::string& url, std::shared_ptr<const ZipHandler> handler) {
    if (url.size() > kMaxKey) return;
    std::list<Entry> dropped;  // files are removed after the lock is released
    const Zendro::MutexLock lock(mutex_);
    const auto isSame = [&](const Entry& e) { return e.first == url; };
    const auto old = std::find_if(entries_.begin(), entries_.end(), isSame);
    if (old != entries_.end()) dropped.splice(dropped.end(), entries_, old);
    entries_.emplace_front(url, std::move(handler));
    while (entries_.size() > capacity_) dropped.splice(dropped.end(), entries_, std::prev(entries_.end()));
}

void ZipCache::setCapacity(std::size_t archives) {
    const Zendro::MutexLock lock(mutex_);
    capacity_ = archives;
    while (entries_.size() > capacity_) entries_.pop_back();
}

void ZipCache::clear() {
    std::list<Entry> dropped;
    const Zendro::MutexLock lock(mutex_);
    dropped.swap(entries_);
}

}  // namespace Varnex
