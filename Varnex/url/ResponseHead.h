#pragma once

#include <Varnex/protocols/HeadReader.h>
#include <Varnex/protocols/ProtocolHTTP.h>

#include <string>
#include <string_view>

namespace Varnex {

// Private to the library.

/// The heads of the answers to one request, put together line by line: interim ones, redirects, the final one.
class ResponseHead {
public:
    enum class State { Incomplete, Interim, Redirect, Final, Malformed };

    /// Adds a line with its end; the first one of a further head drops the one before.
    [[nodiscard]] State add(std::string_view line);

    /// Whether the last head is whole.
    [[nodiscard]] bool isWhole() const { return isWhole_ && reply_.code != 0; }
    [[nodiscard]] const ProtocolHTTP::Reply& getReply() const { return reply_; }
    /// Of the last head, as it came.
    [[nodiscard]] const std::string& getText() const { return text_; }
    /// Without its parameters; empty: none.
    [[nodiscard]] std::string getMimeType() const;

private:
    [[nodiscard]] bool isInterim() const;
    [[nodiscard]] State judge() const;

    std::string text_;
    bool isWhole_ = true;
    HeaderLimits limits_;
    ProtocolHTTP::Reply reply_;
};

}  // namespace Varnex
