#pragma once

#include <Varnex/Export.h>
#include <Varnex/url/URL.h>

#include <cstddef>
#include <string>

namespace Varnex {

/// "zip:URL!/member" and "jar:URL!/member": members of an archive that any other URL names, one in an archive too.
///
/// Stored and deflated members; no encryption, no ZIP64. Relative texts resolve inside the archive. What is read is
/// checked against the archive's checksum: a read that meets the end of a damaged member gives what was decoded and
/// sets the stream's badbit; `read2mem` and `read2disk` throw "Invalid zip file".
///
/// The directories of the archives used last stay in memory; with each goes a copy of the archive, as a temporary file,
/// where it cannot be read in any order, as from a server. A local archive that was replaced is noticed, such a copy
/// serves until it is dropped.
class VARNEX_API URLZip : public URLImpl {
public:
    /// Archives whose directories stay, at first.
    static constexpr std::size_t kDefaultCacheSize = 4;
    /// Bytes that the directory of an archive may have, at first.
    static constexpr unsigned long kDefaultMaxDirectorySize = 64UL << 20;
    /// How many archives may stand in one another, at first.
    static constexpr int kDefaultMaxNesting = 8;

    /// `path`: percent-encoded, from "/" on; `scheme`: "zip" or "jar".
    URLZip(std::string scheme, URL archive, std::string path, std::string fragment);
    ~URLZip() override;

    [[nodiscard]] std::string getScheme() const override;
    [[nodiscard]] std::string toString() const override;
    /// Relative to another member of the same archive.
    [[nodiscard]] std::string toRelativeString(const URLImpl& base) const override;
    /// Throws what opening the archive throws, "Cannot find end of central directory", "Invalid zip file", "Zip does
    /// not contain file", and "Unsupported compression method", also for encrypted members and those with sizes of 64
    /// bits.
    [[nodiscard]] Stream* open() const override;
    [[nodiscard]] Memory read2mem() const override;
    /// Throws "Parse error - query not allowed"; with a host "Parse error - missing URL of Zip file".
    [[nodiscard]] URLZip* createRelative(const std::string& text) const override;
    /// The name of the member, decoded, with "/" before it.
    [[nodiscard]] std::string getPath() const override;
    [[nodiscard]] std::string getName() const override;
    [[nodiscard]] URLZip* getBase() const override;
    [[nodiscard]] bool refersToSameFileAs(const URLImpl& other) const override;
    [[nodiscard]] bool refersToSameDomainAs(const URLImpl& other) const override;

    [[nodiscard]] const URL& getArchive() const { return archive_; }

    /// The last "!/" ends the URL of the archive, which may be relative to `URLFile::_cwd`. Throws "Parse error -
    /// missing URL of Zip file", "Parse error - query not allowed", and "Cannot parse URL" when that URL is of an
    /// unknown scheme or nested too deeply.
    [[nodiscard]] static URLImpl* createAbsolute(const std::string& scheme, const std::string& rest);

    // For the whole process; any thread. 0: none are kept, no limit, no limit.

    static void setCacheSize(std::size_t archives);
    static void clearCache();
    static void setMaxDirectorySize(unsigned long bytes);
    [[nodiscard]] static unsigned long getMaxDirectorySize();
    static void setMaxNesting(int archives);

    static Protocol zipProtocol;
    static Protocol jarProtocol;

private:
    std::string scheme_;
    URL archive_;
    std::string path_;
};

}  // namespace Varnex
