#pragma once

#include <Plexa/ParamBag.h>
#include <Varnex/Export.h>
#include <Varnex/protocols/MessageHeader.h>

#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Varnex {

class Communicator;
class ioStream;

/// One side of HTTP/0.9, 1.0 and 1.1 over a stream: sends and receives requests, replies and bodies.
///
/// Nothing throws: an operation that fails gives false, and the stream keeps its state, so that all later ones fail too
/// until it is cleared or replaced. Heads have limits; bodies are as long as the caller asks for. One thread at a time.
class VARNEX_API ProtocolHTTP {
public:
    // What stands between the parts of a head.

    static constexpr std::string_view sp = " ";
    static constexpr std::string_view crlf = "\r\n";
    static constexpr std::string_view separator = ": ";  ///< of a name and its value

    struct Version {
        std::string name = "HTTP";
        unsigned long major = 1;
        unsigned long minor = 1;

        /// HTTP/0.x: there are neither headers nor status lines.
        [[nodiscard]] bool isSimple() const { return major == 0 && name == "HTTP"; }
    };

    struct RequestLine {
        std::string method;
        std::string uri;
        Version version;
    };

    struct StatusLine {
        Version version;
        unsigned long code = 0;  ///< 100 to 999
        std::string phrase;
    };

    struct Request : RequestLine {
        Plexa::ParamBag query;  ///< what follows the "?" of the URI
        MessageHeader header;
        std::string body;

        /// Moves what follows the first "?" of the URI into the query.
        void splitQuery();
    };

    struct Reply : StatusLine {
        MessageHeader header;
        std::string body;
    };

    // Limits of what is read as the head of a message; 0: none. Any thread. Over one of them reading fails.

    static constexpr unsigned long kDefaultMaxLine = 65536;     ///< bytes of a line
    static constexpr unsigned long kDefaultMaxLines = 256;      ///< lines of a header
    static constexpr unsigned long kDefaultMaxHeader = 262144;  ///< bytes of a header
    static constexpr unsigned long kDefaultMaxBlankLines = 64;  ///< before a request or a status line
    static void setMaxLine(unsigned long bytes);
    static void setMaxLines(unsigned long lines);
    static void setMaxHeader(unsigned long bytes);
    static void setMaxBlankLines(unsigned long lines);

    /// The stream stays the caller's; null: none yet.
    explicit ProtocolHTTP(ioStream* stream);
    ProtocolHTTP(const ProtocolHTTP&) = delete;
    ProtocolHTTP& operator=(const ProtocolHTTP&) = delete;
    virtual ~ProtocolHTTP();

    /// Goes on over another stream, which stays the caller's.
    void setStream(ioStream* newStream);
    /// Goes on over a stream of its own on `communicator`, which stays the caller's.
    void setCommunicator(Communicator* communicator);
    /// Hands the stream to the caller, who owns it then. Everything fails until there is a new one.
    [[nodiscard]] ioStream* releaseStream();
    [[nodiscard]] ioStream* getStream() const { return stream; }

    // All of these flush. True: the stream is good afterwards.

    bool sendRequest(const RequestLine& line, const MessageHeader& header);
    bool sendRequest(const Request& request);
    /// Nothing is written to a peer that speaks HTTP/0.x, and that is a success.
    bool sendReply(const StatusLine& line, const MessageHeader& header);
    bool sendReply(const Reply& reply);
    bool sendBody(const void* data, int length);
    /// One chunk; a length of 0 ends the body. Not the standard's coding: no line end follows the data. The numbers of
    /// the stream stay hexadecimal.
    bool sendChunkedBody(const void* data, int length);

    // False: malformed, over a limit, or there was nothing; the header is empty then. A header that the stream's end
    // cuts off is taken, with an eofbit.

    bool receiveRequest(RequestLine& line, MessageHeader& header);
    /// Everything but the body; the query is split off the URI.
    bool receiveRequest(Request& request);
    bool receiveReply(StatusLine& line, MessageHeader& header);
    bool receiveReply(Reply& reply);
    /// Up to `length` bytes, which becomes how many came. False: fewer, although they are in `buffer`.
    bool receiveBody(unsigned char* buffer, int& length);
    /// Up to `length` bytes of one chunk, which becomes how many came: 0 with true at the end of the body. Not the
    /// standard's coding: a chunk whose data ends in CR LF, not LF, gives false with its last bytes, which are good.
    bool receiveChunkedBody(unsigned char* buffer, int& length);

    /// The reason phrase of a status code; empty for one without.
    [[nodiscard]] static std::string getStatusPhrase(unsigned long code);

    /// Reads the digits of a number to `base`, at most 16, from `pos` on, which moves behind them. False: none. Wraps
    /// round without notice.
    static bool parseNumber(const std::string& s, unsigned long& pos, unsigned long base, unsigned long& value);
    /// Reads "NAME/MAJOR.MINOR" from `pos` on, which moves behind it.
    static bool parseVersion(const std::string& s, unsigned long& pos, Version& version);

    /// Splits "name=value&...", "+" for a blank, decoded; a piece without a name is left out, one without "=" has an
    /// empty value, and of a name that comes twice the last value stays.
    static void parseQuery(const std::string& text, Plexa::ParamBag& query);
    static void parseQuery(const std::string& text, std::map<std::string, std::string>& query);
    /// What `parseQuery` splits. Blanks stay blanks, which a request line cannot have.
    [[nodiscard]] static std::string createQuery(const Plexa::ParamBag& query);
    [[nodiscard]] static std::string createQuery(const std::map<std::string, std::string>& query);

    /// Whether basic authorization names this user; true without looking when both are empty.
    [[nodiscard]] static bool checkAuthorization(const MessageHeader& header, const std::string& user,
                                                 const std::string& password);
    /// What basic authorization names. False: none, or malformed.
    [[nodiscard]] static bool parseAuthorization(const MessageHeader& header, std::string& user, std::string& password);

    /// Seconds since 1970 as the date of a header, "Sun, 06 Nov 1994 08:49:37 GMT". Empty outside the years 0 to 9999,
    /// which it cannot write.
    [[nodiscard]] static std::string createTimestamp(long time);
    /// Reads a date in any of its three forms (RFC 9110, section 5.6.7); whether the weekday fits is not looked at. A
    /// year of two digits lies at most 50 years ahead, or in the past. -1: not a date, or the last second of 1969.
    [[nodiscard]] static long parseTimestamp(const std::string& text);
    /// The decimal numbers between the separators. Empty: a piece is not wholly digits, or a number is too large.
    [[nodiscard]] static std::vector<unsigned long> parseNumber(const std::string& s, char sep);

    // Header values of the form `token; name=value; name="any text"`, alone or in lists with commas (RFC 9110, sections
    // 5.6.1 to 5.6.6). A token may contain "/", as media types do. Names of parameters are given in lower case.

    /// Reads one that stands alone; of a parameter that comes twice the last value stays. False: malformed, and both
    /// are empty.
    static bool parseTokenAndParameters(const std::string& s, std::string& token, Plexa::ParamBag& parameters);
    /// Reads the token of the next list element from `pos` on, which moves behind it. False: malformed at `pos`, or
    /// `pos` is the end of the list.
    static bool parseNextToken(const std::string& s, unsigned long& pos, std::string& token);
    /// Reads the next parameter of the element. False: malformed at `pos`, a ";", or `pos` is where the element ends:
    /// at a comma or the end.
    static bool parseNextParameter(const std::string& s, unsigned long& pos, std::string& name, std::string& value);
    /// Moves `pos` to where the element ends. False: malformed at `pos`.
    static bool skipParameters(const std::string& s, unsigned long& pos);
    /// What `parseTokenAndParameters` reads, with quotes where needed. Empty: the token or a name is none, or a value
    /// has control characters.
    [[nodiscard]] static std::string createTokenAndParameters(const std::string& token,
                                                              const Plexa::ParamBag& parameters);

protected:
    ioStream* stream;
    bool ownsStream = false;
    std::uint32_t chunkRemaining = 0;

private:
    bool flush(const std::string& head, std::string_view body);
};

// Records as text. Readers tell what is malformed, or over a limit, by the fail bit; writers write one piece, and
// nothing to a stream that is not good.

VARNEX_API std::istream& operator>>(std::istream& stream, ProtocolHTTP::RequestLine& line);
VARNEX_API std::ostream& operator<<(std::ostream& stream, const ProtocolHTTP::RequestLine& line);
VARNEX_API std::istream& operator>>(std::istream& stream, ProtocolHTTP::StatusLine& line);
/// A code of 1000 or more is the fail bit.
VARNEX_API std::ostream& operator<<(std::ostream& stream, const ProtocolHTTP::StatusLine& line);
/// Everything but the body; the query is split off the URI.
VARNEX_API std::istream& operator>>(std::istream& stream, ProtocolHTTP::Request& request);
VARNEX_API std::ostream& operator<<(std::ostream& stream, const ProtocolHTTP::Request& request);
/// Everything but the body.
VARNEX_API std::istream& operator>>(std::istream& stream, ProtocolHTTP::Reply& reply);
VARNEX_API std::ostream& operator<<(std::ostream& stream, const ProtocolHTTP::Reply& reply);

}  // namespace Varnex
