#pragma once

#include <Varnex/protocols/HeadReader.h>
#include <Varnex/url/ConnectionDelegate.h>
#include <Varnex/url/CurlHandles.h>
#include <Varnex/url/LoadGuard.h>
#include <Varnex/url/LoadOptions.h>
#include <Varnex/url/ResponseHead.h>

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

namespace Varnex {

// Private to the library.

/// The loading of one URL by libcurl. It goes on only inside `run`, on the thread that calls it, and holds at most a
/// chunk and libcurl's own buffer of what the reader has not taken. Callbacks never let an exception into libcurl.
/// The connection may be one that an earlier loading has left.
class CurlTransfer {
public:
    /// Bytes that libcurl receives at once.
    static constexpr long kReceiveSize = 131'072;
    /// How long one wait takes at most, after which limits are looked at.
    static constexpr std::chrono::milliseconds kTurn{100};

    /// `url`: only "http:", "https:" and "ftp:" ever load. `delegate` outlives this. Throws `URLImpl::Exception` when
    /// it cannot begin.
    CurlTransfer(const std::string& url, std::shared_ptr<const LoadOptions> options, ConnectionDelegate& delegate);
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;
    ~CurlTransfer();

    using Condition = bool (ConnectionDelegate::*)() const;

    /// Goes on until the delegate meets the condition, which must hold once it has failed or finished.
    void run(Condition condition);

    [[nodiscard]] const ResponseHead& getHead() const { return head_; }
    /// That of the last request.
    [[nodiscard]] std::string getUrl() const;
    /// Throws what the policy had against it, if anything.
    void raiseRefusal() const { guard_.raise(); }

private:
    using Clock = std::chrono::steady_clock;

    template <class T>
    void set(CURLoption option, T value);
    void setRequest(const std::string& url);
    void setLimits();
    void setCallbacks();
    void addHeader();

    [[nodiscard]] bool onHeader(std::string_view line);
    [[nodiscard]] bool onHead(ResponseHead::State state);
    [[nodiscard]] std::size_t onData(std::string_view chunk);
    [[nodiscard]] curl_socket_t onSocket(const curl_sockaddr& address);
    [[nodiscard]] bool onRequest(const std::string& address);

    void answer(long long length);
    [[nodiscard]] long long announcedLength() const;
    void resume();
    void perform();
    void wait();
    void end(CURLcode result);
    void fail(const std::string& reason);

    std::shared_ptr<const LoadOptions> options_;
    ConnectionDelegate& delegate_;
    std::string server_;  // the text of the URL up to its path
    bool isFtp_;
    LoadGuard guard_;
    ResponseHead head_;
    HeaderLimits otherLines_;  // trailers, and all that a server of FTP says
    bool isPaused_ = false;
    bool isConnected_ = false;
    Clock::time_point lastProgress_;
    char error_[CURL_ERROR_SIZE] = "";
    CurlList header_;
    CurlHandle easy_;
    CurlMultiHandle multi_;
};

}  // namespace Varnex
