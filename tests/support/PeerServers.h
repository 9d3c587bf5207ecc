#pragma once

#include <tests/support/ChildProcess.h>
#include <tests/support/TestFolder.h>

#include <optional>
#include <string>

#include <arpa/inet.h>
#include <sys/socket.h>

/// A server of others, a process of its own at a free port of 127.0.0.1. It serves a folder, which must outlive it.
class PeerServer {
public:
    [[nodiscard]] unsigned short port() const { return port_; }
    /// `host`: may also be another name of 127.0.0.1, or begin with a user.
    [[nodiscard]] std::string url(const std::string& scheme, const std::string& path,
                                  const std::string& host = "127.0.0.1") const {
        return scheme + "://" + host + ":" + std::to_string(port_) + path;
    }

protected:
    PeerServer() = default;
    /// For a server that prints "port" and its port first.
    explicit PeerServer(const std::string& words) : process_(words) {
        const std::string line = process_->text(ChildProcess::Output);
        port_ = static_cast<unsigned short>(std::stoi(line.substr(line.find("port ") + 5)));
    }

    unsigned short port_ = 0;
    std::optional<ChildProcess> process_;
};

/// http.server of Python: HTTP/1.0, and folders are listed.
struct PythonServer : PeerServer {
    explicit PythonServer(const TestFolder& folder)
        : PeerServer("/usr/bin/python3 -I -u -m http.server 0 --bind 127.0.0.1 --directory " + folder.path("")) {}
};

/// An FTP server for anybody and for "user" with the password "secret".
struct FtpServer : PeerServer {
    /// `set`: more Python, that changes the class `Handler`.
    explicit FtpServer(const TestFolder& folder, const std::string& set = "")
        : PeerServer("/usr/bin/python3 -I -c '" + (kScript + set) + kServe + "' " + folder.path("")) {}

private:
    static inline const std::string kScript = R"(
import logging, sys
from pyftpdlib import authorizers, handlers, servers
class Handler(handlers.FTPHandler): authorizer, auth_failed_timeout = authorizers.DummyAuthorizer(), 0
Handler.authorizer.add_anonymous(sys.argv[1])
Handler.authorizer.add_user("user", "secret", sys.argv[1])
)";
    static constexpr const char* kServe = R"(
logging.basicConfig(level=logging.ERROR)
server = servers.FTPServer(("127.0.0.1", 0), Handler)
print("port", server.address[1], flush=True)
server.serve_forever()
)";
};

/// nginx.
class Nginx : public PeerServer {
public:
    /// `server`: what else stands in its server block. `listen`: "ssl" for HTTPS with a `certificate` of the folder.
    explicit Nginx(const TestFolder& folder, const std::string& server = "", const std::string& listen = "")
        : log_(folder.path("nginx.log")) {
        const Varnex::UniqueFd listener = listenAnywhere();
        folder.write("nginx.conf", configuration(folder.path("."), server, listen));
        // It takes over the sockets that this variable lists, as from another nginx: nobody can take the port away in
        // between, and clients need not wait until it is up.
        process_.emplace("env NGINX='" + std::to_string(listener.get()) + ";' /usr/sbin/nginx -e " +
                         folder.path("nginx.log") + " -p " + folder.path(".") + " -c " + folder.path("nginx.conf"));
    }
    ~Nginx() { EXPECT_EQ(process_->wait(SIGTERM), 0) << TestFolder::read(log_); }  // its worker ends, too

    /// Makes the files "key" and "certificate", which names 127.0.0.1 and nothing else.
    static void makeCertificate(const TestFolder& folder) {
        ChildProcess openssl(
            "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj /CN=test"
            " -addext subjectAltName=IP:127.0.0.1 -keyout " +
            folder.path("key") + " -out " + folder.path("certificate"));
        const std::string messages = openssl.rest(ChildProcess::Error);
        EXPECT_EQ(openssl.wait(), 0) << messages;
    }

private:
    [[nodiscard]] Varnex::UniqueFd listenAnywhere() {
        Varnex::UniqueFd listener(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
        sockaddr_in internet{};
        internet.sin_family = AF_INET;
        internet.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof internet;
        auto* const address = reinterpret_cast<sockaddr*>(&internet);
        EXPECT_EQ(::bind(listener.get(), address, size), 0);
        EXPECT_EQ(::listen(listener.get(), SOMAXCONN), 0);
        EXPECT_EQ(::getsockname(listener.get(), address, &size), 0);
        port_ = ntohs(internet.sin_port);
        return listener;
    }
    [[nodiscard]] std::string configuration(const std::string& folder, const std::string& server,
                                            const std::string& listen) const {
        std::string text = "user root; daemon off; pid " + folder + "/nginx.pid; events {} http { access_log off;";
        for (const char* kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"})
            text += std::string(kind) + "_temp_path " + folder + "/temporary;";
        if (!listen.empty()) text += "ssl_certificate certificate; ssl_certificate_key key;";
        return text + "server { listen 127.0.0.1:" + std::to_string(port_) + " " + listen + "; root " + folder + ";" +
               server + "} }";
    }

    std::string log_;
};
