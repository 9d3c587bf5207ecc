#include <Varnex/web/PageRegistry.h>

#include <mutex>
#include <utility>

#include <fnmatch.h>

namespace Varnex {

void PageRegistry::add(const std::string& path, std::shared_ptr<WebPage> page) {
    const std::unique_lock lock(mutex_);
    pagesFor(path)[path].swap(page);
}

void PageRegistry::remove(const std::string& path) {
    std::shared_ptr<WebPage> removed;  // deleted without the lock
    const std::unique_lock lock(mutex_);
    Pages& pages = pagesFor(path);
    const auto found = pages.find(path);
    if (found == pages.end()) return;
    removed = std::move(found->second);
    pages.erase(found);
}

std::shared_ptr<WebPage> PageRegistry::find(const std::string& path, bool longestMatch) const {
    const std::shared_lock lock(mutex_);
    if (const auto exact = pages_.find(path); exact != pages_.end()) return exact->second;
    const auto found = match(path, longestMatch);
    return found == wildcardPages_.end() ? nullptr : found->second;
}

PageRegistry::Pages::const_iterator PageRegistry::match(const std::string& path, bool longestMatch) const {
    auto best = wildcardPages_.end();
    for (auto page = wildcardPages_.begin(); page != wildcardPages_.end(); ++page) {
        if (best != wildcardPages_.end() && page->first.size() <= best->first.size()) continue;
        if (::fnmatch(page->first.c_str(), path.c_str(), 0) != 0) continue;
        best = page;
        if (!longestMatch) break;
    }
    return best;
}

bool PageRegistry::hasWildcards(const std::string& s) {
    for (std::size_t at = s.find_first_of("*?"); at != std::string::npos; at = s.find_first_of("*?", at + 1))
        if (at == 0 || s[at - 1] != '\\') return true;
    return false;
}

}  // namespace Varnex
