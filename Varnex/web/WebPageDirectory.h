#pragma once

#include <Varnex/web/WebPage.h>

#include <memory>
#include <string>
#include <utility>

namespace Varnex {

class FolderFd;

/// The files of a folder and of those in it, and nothing outside, not even through a symbolic link. Names that begin
/// with
/// "." are not served.
///
/// GET and HEAD, conditional and of single ranges (RFC 9110, sections 13 and 14). A file is read from the disk as it is
/// sent. Whatever cannot be served is an error page, not the end of the connection.
class VARNEX_API WebPageDirectory : public WebPage {
public:
    /// Files up to this size are compressed for clients that accept it, if their type is worth it.
    static constexpr unsigned long kDefaultMaxGzip = 1UL << 20U;  // bytes
    static constexpr unsigned kMaxListing = 10'000;               ///< entries of a listing

    /// `prefix`: the path before those of the files, such as "/files/"; add the page as prefix + "*". The folder is the
    /// one that has this name now. Throws `IOException` when there is none.
    WebPageDirectory(std::string prefix, const std::string& folder);
    ~WebPageDirectory() override;

    /// Whether a folder without an index file shows what is in it; false at first.
    void setListing(bool on) { listing_ = on; }
    /// What a folder shows, at first "index.html"; empty: nothing.
    void setIndex(std::string name) { index_ = std::move(name); }
    /// 0: nothing is compressed.
    void setMaxGzip(unsigned long bytes) { maxGzip_ = bytes; }
    /// How long clients may keep a file without asking again, in seconds; 0, the default: not at all.
    void setMaxAge(unsigned long seconds) { maxAge_ = seconds; }

    using WebPage::create;
    bool create(WebClient* client, const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply) override;
    [[nodiscard]] WebPageDirectory* clone() const override;

private:
    struct Target;

    [[nodiscard]] bool locate(const std::string& path, std::string& name) const;
    void serveFolder(WebClient* client, const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply,
                     Target& target) const;
    void serveFile(WebClient* client, const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply,
                   Target& target) const;

    std::string prefix_;
    std::shared_ptr<const FolderFd> folder_;
    std::string index_ = "index.html";
    bool listing_ = false;
    unsigned long maxGzip_ = kDefaultMaxGzip;
    unsigned long maxAge_ = 0;
};

}  // namespace Varnex
