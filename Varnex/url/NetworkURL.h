#pragma once

#include <Varnex/Export.h>
#include <Varnex/url/URLImpl.h>

#include <string>

namespace Varnex {

/// What the schemes of servers, "http", "https" and "ftp", have in common.
class VARNEX_API NetworkURL : public URLImpl {
public:
    ~NetworkURL() override;

    /// The first of these that resolves to this URL: the relative path, the whole path, "//" and everything, the whole.
    [[nodiscard]] std::string toRelativeString(const URLImpl& base) const override;
    [[nodiscard]] std::string getHost() const override;
    [[nodiscard]] int getPort() const override;
    [[nodiscard]] std::string getPath() const override;
    [[nodiscard]] std::string getName() const override;
    /// Compares hosts, ports and paths.
    [[nodiscard]] bool refersToSameFileAs(const URLImpl& other) const override;
    /// Compares hosts and ports.
    [[nodiscard]] bool refersToSameDomainAs(const URLImpl& other) const override;

    /// As written.
    [[nodiscard]] const std::string& getUser() const { return user; }
    [[nodiscard]] const std::string& getPassword() const { return password; }

protected:
    struct Server {
        std::string user, password, host;
        int port;  // never negative
    };

    NetworkURL(Server server, std::string path, std::string fragment);

    /// Takes an authority apart, its port to be the default where none is given. False: the port is no number. Throws
    /// "Parse error - host is missing".
    static bool parseServer(const std::string& authority, int defaultPort, Server& server);

    [[nodiscard]] virtual int getDefaultPort() const = 0;
    /// What follows the path.
    [[nodiscard]] virtual std::string getSuffix() const = 0;

    [[nodiscard]] Server getServer() const { return {user, password, host, port}; }
    /// User, host and port as a URL has them, without the default port.
    [[nodiscard]] std::string getAuthority() const;

    std::string user;
    std::string password;
    std::string host;  // as written
    int port;
    std::string path;  // percent-encoded
};

}  // namespace Varnex
