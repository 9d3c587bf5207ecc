#pragma once

#include <Varnex/web/WebPage.h>

#include <map>
#include <memory>
#include <shared_mutex>
#include <string>

namespace Varnex {

// Private to the library.

/// The pages of a web server, by path. Any thread; whoever has found a page keeps it alive.
class PageRegistry {
public:
    void add(const std::string& path, std::shared_ptr<WebPage> page);
    void remove(const std::string& path);

    /// The page of exactly this path, or else of a matching pattern: the longest, or the first in their order. Null:
    /// none.
    [[nodiscard]] std::shared_ptr<WebPage> find(const std::string& path, bool longestMatch) const;

    /// Whether there is a "*" or "?" without a backslash before it.
    [[nodiscard]] static bool hasWildcards(const std::string& s);

private:
    using Pages = std::map<std::string, std::shared_ptr<WebPage>>;

    [[nodiscard]] Pages& pagesFor(const std::string& path) { return hasWildcards(path) ? wildcardPages_ : pages_; }
    [[nodiscard]] Pages::const_iterator match(const std::string& path, bool longestMatch) const;

    mutable std::shared_mutex mutex_;  // of both
    Pages pages_;
    Pages wildcardPages_;
};

}  // namespace Varnex
