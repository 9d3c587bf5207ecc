#pragma once

#include <Varnex/Export.h>
#include <Varnex/protocols/ProtocolHTTP.h>

namespace Varnex {

class WebClient;

/// What a web server asks to fill in a reply: status, header and body. The rest of the reply, and sending it, is the
/// server's. A value: the server keeps a clone of its own.
///
/// A threaded server asks it on many threads at once, so `create` must be safe for that. What it throws costs the
/// connection that asked, with an ERROR line.
class VARNEX_API WebPage {
public:
    WebPage() = default;

    // The order of the virtual operations is binary interface: append, never reorder.
    virtual ~WebPage();

    /// What the server calls. False: no reply, and the connection is closed. A kind that needs the connection, to take
    /// it over or to send a file, overrides this one; otherwise `client` is ignored.
    virtual bool create(WebClient* client, const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply);
    /// What the other kinds override; false here.
    virtual bool create(const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply);
    /// A copy on the heap, which is the caller's.
    [[nodiscard]] virtual WebPage* clone() const = 0;

protected:
    WebPage(const WebPage&) = default;
    WebPage& operator=(const WebPage&) = default;
};

}  // namespace Varnex
