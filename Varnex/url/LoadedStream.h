#pragma once

#include <Varnex/Export.h>
#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/url/URLStream.h>

#include <memory>
#include <streambuf>
#include <string>

namespace Varnex {

/// What a server sends, with what it says about it. To be read by the thread that opened it.
class VARNEX_API LoadedStream : public URLImpl::Stream {
public:
    struct Answer {
        std::string url;            ///< that was answered, after all redirects
        ProtocolHTTP::Reply reply;  ///< without a body; a code of 0: from a server of FTP
        std::string head;           ///< of that reply, as it came
        long long offset = 0;       ///< the place of the first byte in the resource
        long long length = -1;      ///< of what follows, in bytes; -1: not known
    };

    LoadedStream(std::unique_ptr<std::streambuf> buffer, std::string mimeType, Answer answer);
    ~LoadedStream() override;

    [[nodiscard]] const Answer& getAnswer() const { return answer_; }

    /// Waits for the next bytes and reads what is there, up to `n`, which is more than 0; 0 at the end. Leaves the
    /// state of the stream alone: throws `URLImpl::Exception`, with the reason, when the loading failed.
    [[nodiscard]] std::streamsize readSome(char* s, std::streamsize n);

private:
    Answer answer_;
};

}  // namespace Varnex
