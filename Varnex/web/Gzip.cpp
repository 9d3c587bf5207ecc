#include <Varnex/web/Gzip.h>

#include <Varnex/protocols/ProtocolHTTP.h>

#include <zlib.h>

namespace Varnex::Gzip {

namespace {

constexpr int kLevel = 5;
constexpr int kGzipWindow = 15 + 16;  // with the header and trailer of gzip
constexpr int kMemoryLevel = 8;

/// zlib's state, which ends with it.
class Deflation {
public:
    Deflation()
        : isOpen_(::deflateInit2(&stream_, kLevel, Z_DEFLATED, kGzipWindow, kMemoryLevel, Z_DEFAULT_STRATEGY) == Z_OK) {
    }
    ~Deflation() {
        if (isOpen_) ::deflateEnd(&stream_);
    }
    Deflation(const Deflation&) = delete;
    Deflation& operator=(const Deflation&) = delete;

    [[nodiscard]] bool run(const std::string& text, std::string& out) {
        if (!isOpen_) return false;
        out.resize(::deflateBound(&stream_, text.size()));
        stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
        stream_.avail_in = static_cast<uInt>(text.size());
        stream_.next_out = reinterpret_cast<Bytef*>(out.data());
        stream_.avail_out = static_cast<uInt>(out.size());
        const bool isWhole = ::deflate(&stream_, Z_FINISH) == Z_STREAM_END;
        out.resize(stream_.total_out);
        return isWhole;
    }

private:
    z_stream stream_{};
    bool isOpen_;
};

/// A weight of 0, however many digits follow.
bool isNothing(const std::string& weight) {
    return !weight.empty() && weight.find_first_not_of("0.") == std::string::npos;
}

}  // namespace

bool isAccepted(const MessageHeader& request) {
    const std::string list = request.getParam("Accept-Encoding");
    unsigned long pos = 0;
    std::string coding, name, value;
    while (ProtocolHTTP::parseNextToken(list, pos, coding)) {
        std::string weight;
        while (ProtocolHTTP::parseNextParameter(list, pos, name, value))
            if (name == "q") weight = value;
        if (coding == "gzip" || coding == "*") return !isNothing(weight);
        if (!ProtocolHTTP::skipParameters(list, pos)) return false;
    }
    return false;
}

bool isWorthwhile(const std::string& type) {
    if (type.starts_with("text/") || type.ends_with("+xml") || type.ends_with("+json")) return true;
    for (const char* text : {"application/javascript", "application/json", "application/xml", "application/wasm",
                             "application/x-javascript", "model/vrml", "model/x3d+vrml"})
        if (type == text) return true;
    return false;
}

bool compress(const std::string& text, std::string& compressed) {
    Deflation deflation;
    return deflation.run(text, compressed);
}

}  // namespace Varnex::Gzip
