#pragma once

#include <Varnex/Export.h>
#include <Varnex/url/NetworkURL.h>

#include <string>

namespace Varnex {

/// "ftp:" URLs, with the type of transfer that a path can end with: ";type=a" or ";type=i".
class VARNEX_API URLFTP : public NetworkURL {
public:
    static constexpr int kDefaultPort = 21;

    /// `path`: percent-encoded; `typeCode`: 0, 'a', 'd' or 'i'.
    URLFTP(std::string user, std::string password, std::string host, int port, std::string path, char typeCode,
           std::string fragment);
    ~URLFTP() override;

    [[nodiscard]] std::string getScheme() const override;
    [[nodiscard]] std::string toString() const override;
    /// What `openURL` gives, as the current `LoadOptions` say; a path that ends in "/": a listing.
    [[nodiscard]] Stream* open() const override;
    /// Null: a query, or a port that is no number.
    [[nodiscard]] URLFTP* createRelative(const std::string& text) const override;
    [[nodiscard]] URLFTP* getBase() const override;

    /// 0: none.
    [[nodiscard]] char getTypeCode() const { return typeCode_; }

    /// Null: no path, a query, or a port that is no number. Throws "Parse error - missing authority" and "Parse error -
    /// host is missing".
    [[nodiscard]] static URLImpl* createAbsolute(const std::string& scheme, const std::string& rest);

    /// Takes a type off the end of `path`; without one `typeCode` becomes 0. False, and nothing changes: an unknown
    /// type.
    static bool parseTypeCode(std::string& path, char& typeCode);

    static Protocol _ftpProtocol;

protected:
    [[nodiscard]] int getDefaultPort() const override { return kDefaultPort; }
    [[nodiscard]] std::string getSuffix() const override;

private:
    URLFTP(Server server, std::string path, char typeCode, std::string fragment);

    char typeCode_;
};

}  // namespace Varnex
