#pragma once

#include <Varnex/Export.h>
#include <Varnex/url/NetworkURL.h>

#include <string>

namespace Varnex {

/// "http:" and "https:" URLs.
class VARNEX_API URLHTTP : public NetworkURL {
public:
    static constexpr int kDefaultPort = 80;
    static constexpr int kDefaultSecurePort = 443;

    /// `path`: percent-encoded, not empty.
    URLHTTP(std::string user, std::string password, std::string host, int port, std::string path, std::string query,
            bool https, std::string fragment);
    ~URLHTTP() override;

    [[nodiscard]] std::string getScheme() const override;
    [[nodiscard]] std::string toString() const override;
    /// What `openURL` gives, as the current `LoadOptions` say.
    [[nodiscard]] Stream* open() const override;
    [[nodiscard]] URLHTTP* createRelative(const std::string& text) const override;
    [[nodiscard]] URLHTTP* getBase() const override;

    /// With a "#" at its end when a fragment follows: see `URLImpl::parseQuery`.
    [[nodiscard]] const std::string& getQuery() const { return query_; }

    /// Throws "Parse error - missing authority", "Parse error - invalid port" and "Parse error - host is missing".
    [[nodiscard]] static URLImpl* createAbsolute(const std::string& scheme, const std::string& rest);

    static Protocol _httpProtocol;
    static Protocol _httpsProtocol;

protected:
    [[nodiscard]] int getDefaultPort() const override { return https_ ? kDefaultSecurePort : kDefaultPort; }
    [[nodiscard]] std::string getSuffix() const override;

private:
    URLHTTP(Server server, std::string path, std::string query, bool https, std::string fragment);

    std::string query_;
    bool https_;
};

}  // namespace Varnex
