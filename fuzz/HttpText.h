#pragma once

#include <Varnex/protocols/MessageHeader.h>
#include <Varnex/transport/Communicator.h>
#include <fuzz/Pieces.h>

#include <sstream>

/// What the targets of HTTP have in common.
namespace Fuzz {

inline Plexa::ParamBag::Params paramsOf(const Plexa::ParamBag& bag) {
    Plexa::ParamBag::Params params;
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
    check(!again.fail() && shown(same) == whole);
}

/// A connection that has sent the text and then ended.
struct TextPeer : Varnex::Communicator {
    explicit TextPeer(std::string_view sent) : text(sent) {}
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

}  // namespace Fuzz
