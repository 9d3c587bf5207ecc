#include <Varnex/transport/LowerCase.h>
#include <Varnex/url/QX_URLStreamHandler.h>
#include <Varnex/url/URLProtocol.h>
#include <Varnex/url/URLStreamHandlerImpl.h>

#include <utility>

namespace Varnex {

namespace {

/// The registry's entry of a scheme that a program has registered.
class URLStreamHandlerProtocol : public URLImpl::Protocol {
public:
    URLStreamHandlerProtocol(std::string scheme, QX_URLStreamHandler* handler)
        : Protocol(std::move(scheme), nullptr), handler_(handler) {}

    [[nodiscard]] URLImpl* createAbsolute(const std::string& scheme, const std::string& rest) const override {
        UrlRecord record(scheme, handler_);
        return record.parse(rest) ? new URLStreamHandlerImpl(std::move(record)) : nullptr;
    }

    [[nodiscard]] bool isOf(const QX_URLStreamHandler* handler) const { return handler == handler_; }

private:
    QX_URLStreamHandler* handler_;
};

std::string lowered(const char* text) {
    std::string scheme = text;
    makeLowerCase(scheme);
    return scheme;
}

/// Null: none, or one of the library's own.
URLStreamHandlerProtocol* findExternal(const std::string& scheme) {
    return dynamic_cast<URLStreamHandlerProtocol*>(URLImpl::Protocol::find(scheme));
}

}  // namespace

}  // namespace Varnex

using namespace Varnex;

QX_URLStreamHandler* QX_URLStreamHandlerFactory_registerHandler(const char* scheme, QX_URLStreamHandler* handler) {
    if (scheme == nullptr || handler == nullptr) return handler;
    const std::string name = lowered(scheme);
    delete findExternal(name);                    // nothing else would
    new URLStreamHandlerProtocol(name, handler);  // the registry keeps it
    return handler;
}

void QX_URLStreamHandlerFactory_unregisterHandler(const char* scheme, QX_URLStreamHandler* handler) {
    if (scheme == nullptr) return;
    const auto* const entry = findExternal(lowered(scheme));
    if (entry != nullptr && entry->isOf(handler)) delete entry;
}
