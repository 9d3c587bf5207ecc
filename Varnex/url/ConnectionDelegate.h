#pragma once

#include <ios>
#include <string>
#include <string_view>
#include <vector>

namespace Varnex {

// Private to the library.

/// What the reader of a URL knows of its loading, told by whoever does that, on the reader's thread.
class ConnectionDelegate {
public:
    /// An answer in place of an earlier one, whose bytes are dropped. `contentLength`: -1 where unknown.
    void didReceiveResponse(long long contentLength, std::string mimeType);
    /// False: the reader has not taken the last chunk yet, so this one must come again.
    [[nodiscard]] bool didReceiveData(std::string_view chunk);
    void didFailWithError(std::string reason);
    void didFinishLoading();

    /// The memory that the next chunks go to directly, as far as they fit, until `take`.
    void lend(char* s, std::streamsize n);
    /// Ends the lending: how many bytes are there now, those of a waiting chunk among them.
    [[nodiscard]] std::streamsize take();

    /// Whether a response has come, even when it broke off since.
    [[nodiscard]] bool hasResponse() const { return responded_; }
    /// Whether a response or a failure has.
    [[nodiscard]] bool hasAnswer() const { return gotAnswer_; }
    /// Whether `take` gives something, or never will again.
    [[nodiscard]] bool isReadable() const { return hasData() || isOver(); }
    [[nodiscard]] bool hasData() const { return lent_ > 0 || !data_.empty(); }
    [[nodiscard]] bool isOver() const { return finished_ || hasFailed(); }
    [[nodiscard]] bool hasFailed() const { return gotAnswer_ && !succeeded_; }

    [[nodiscard]] long long getContentLength() const { return contentLength_; }
    [[nodiscard]] const std::string& getMimeType() const { return mimeType_; }
    /// Why it failed.
    [[nodiscard]] const std::string& getReason() const { return reason_; }

private:
    void lendTo(std::string_view& chunk);
    void dropData();

    bool responded_ = false;
    bool succeeded_ = false;
    long long contentLength_ = -1;
    std::string mimeType_;
    std::vector<char> data_;  // of the last chunk, what did not fit
    std::size_t offset_ = 0;  // how much of it has been taken
    bool gotAnswer_ = false;
    bool finished_ = false;

    char* lentTo_ = nullptr;
    std::streamsize lentSize_ = 0;
    std::streamsize lent_ = 0;  // how much of it has been filled
    std::string reason_;
};

}  // namespace Varnex
