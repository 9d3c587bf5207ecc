// Byte 0 chooses how the text is read: as a header, a request, a reply, a chunked body, a query, or credentials. What
// was understood is written and read again.

#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/streams/ioStream.h>
#include <Varnex/transport/Communicator.h>
#include <fuzz/Pieces.h>

#include <sstream>

using namespace Varnex;

namespace {

using Params = Plexa::ParamBag::Params;

Params paramsOf(const Plexa::ParamBag& bag) {
    Params params;
    bag.getParams(params);
    return params;
}

/// One text for all that was read.
template <class Record>
std::string shown(const Record& record) {
    std::ostringstream text;
    text << record;
    return text.str();
}

/// What is read of the text, if anything, gives the same text when it is written and read again.
template <class Record>
void checkRecord(const std::string& text) {
    std::istringstream stream(text);
    Record record;
    if (!(stream >> record)) return;
    const std::string whole = shown(record);
    if (whole.empty()) return;  // a status line of HTTP/0.x
    std::istringstream again(whole);
    Record same;
    again >> same;
    Fuzz::check(!again.fail() && shown(same) == whole);
}

/// The query is split off the URI, so these are not written again.
void checkRequest(const std::string& text) {
    std::istringstream stream(text);
    ProtocolHTTP::Request request;
    const bool isGood = static_cast<bool>(stream >> request);
    Fuzz::check(!stream.good() || request.uri.find('?') == std::string::npos);
    Fuzz::check(isGood || request.header.empty());
    checkRecord<ProtocolHTTP::RequestLine>(text);
}

void checkHeader(const std::string& text) {
    std::istringstream stream(text);
    MessageHeader header;
    const bool isGood = static_cast<bool>(stream >> header);
    Fuzz::check(isGood || header.empty());
    checkRecord<MessageHeader>(text);
}

/// A connection that has sent the text and then ended.
struct Peer : Communicator {
    std::string_view text;
    bool close() override { return true; }
    bool receive(void* data, int& n) override {
        n = static_cast<int>(text.copy(static_cast<char*>(data), static_cast<std::size_t>(n)));
        text.remove_prefix(static_cast<std::size_t>(n));
        return true;
    }
    bool waitForData() override { return true; }
    int waitForData(int) override { return WaitData; }
    void breakWait() override {}
    bool dataAvail(int& n) override { return n = static_cast<int>(text.size()), true; }
    using Sender::send;
    bool send(const void*, int&) override { return true; }
};

/// The bytes of all chunks, however large the pieces are.
std::string readChunks(std::string_view text, Fuzz::Sizes sizes) {
    Peer peer;
    peer.text = text;
    ProtocolHTTP engine(nullptr);
    engine.setCommunicator(&peer);
    std::string all;
    for (std::size_t i = 0;; ++i) {
        std::vector<unsigned char> piece(std::max<std::size_t>(Fuzz::pieceSize(sizes, i), 1));
        int n = static_cast<int>(piece.size());
        const bool isGood = engine.receiveChunkedBody(piece.data(), n);
        Fuzz::check(n >= 0 && static_cast<std::size_t>(n) <= piece.size());
        all.append(piece.begin(), piece.begin() + n);
        if (!isGood || n == 0) return all;
    }
}

void checkQuery(const std::string& text) {
    Plexa::ParamBag query, same;
    ProtocolHTTP::parseQuery(text, query);
    ProtocolHTTP::parseQuery(ProtocolHTTP::createQuery(query), same);
    Fuzz::check(paramsOf(query) == paramsOf(same));
}

void checkAuthorization(const std::string& text) {
    MessageHeader header;
    header.setParam("Authorization", text);
    std::string user, password;
    if (!ProtocolHTTP::parseAuthorization(header, user, password)) return;
    Fuzz::check(ProtocolHTTP::checkAuthorization(header, user, password));
    Fuzz::check(!ProtocolHTTP::checkAuthorization(header, user + "x", password));
}

void checkInput(std::uint8_t choice, Fuzz::Sizes sizes, std::string_view input) {
    const std::string text(input);
    switch (choice >> 1 & 7) {
        case 0:
            return checkHeader(text);
        case 1:
            return checkRequest(text);
        case 2:
            return checkRecord<ProtocolHTTP::Reply>(text);
        case 3:
            return Fuzz::check(readChunks(input, sizes) == readChunks(input, Fuzz::Sizes(Fuzz::kLargest)));
        case 4:
            return checkQuery(text);
        default:
            return checkAuthorization(text);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Fuzz::run(data, size, checkInput);
}
