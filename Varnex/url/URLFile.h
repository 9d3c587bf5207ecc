#pragma once

#include <Varnex/Export.h>
#include <Varnex/url/URLImpl.h>

#include <string>

namespace Varnex {

/// "file:" URLs: local files. One with a host can be parsed and printed, but not opened.
class VARNEX_API URLFile : public URLImpl {
public:
    /// The working directory, with "/" at its end.
    URLFile();
    /// The parts as they are.
    URLFile(std::string host, std::string path, std::string fragment);
    ~URLFile() override;

    [[nodiscard]] std::string getScheme() const override;
    [[nodiscard]] std::string toString() const override;
    /// Best effort: the result is empty for the folder of `base`, and begins with what looks like a scheme where the
    /// name has a ":".
    [[nodiscard]] std::string toRelativeString(const URLImpl& base) const override;
    /// Regular files only.
    [[nodiscard]] Stream* open() const override;
    /// The file itself, never a copy.
    [[nodiscard]] File read2disk() const override;
    [[nodiscard]] URLFile* createRelative(const std::string& text) const override;
    [[nodiscard]] std::string getHost() const override;
    [[nodiscard]] std::string getPath() const override;
    [[nodiscard]] std::string getName() const override;
    [[nodiscard]] URLFile* getBase() const override;
    [[nodiscard]] bool refersToSameFileAs(const URLImpl& other) const override;
    [[nodiscard]] bool refersToSameDomainAs(const URLImpl& other) const override;

    [[nodiscard]] static URLImpl* createAbsolute(const std::string& scheme, const std::string& rest);

    /// The working directory when the library was loaded: the base for plain file names.
    static URLFile _cwd;
    static Protocol _fileProtocol;

private:
    [[nodiscard]] std::string pathToOpen() const;

    std::string host_;
    std::string path_;  // percent-encoded
};

}  // namespace Varnex
