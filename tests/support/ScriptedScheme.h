#pragma once

#include <Varnex/url/QX_URLStreamHandler.h>
#include <Varnex/url/URLImpl.h>

#include <cstdlib>
#include <string>
#include <vector>

/// What the streams of a scripted scheme deliver, each anew and in one direction, and what was asked of them.
inline struct ResourceScript {
    int length = -1;
    std::string content = {};
    const char* error = nullptr;  ///< what the end of the content throws, if anything
    bool opens = true;
    int lie = 0;  ///< what a read answers instead, unless 0
    std::string log = {};
    std::vector<int> asked = {};
    std::size_t at = 0;
    int opened = 0;
} script;

inline QX_URLStream* newStream() {
    return static_cast<QX_URLStream*>(std::calloc(1, sizeof(QX_URLStream)));
}

inline QX_URLStream* openScript(QX_URL* url) {
    if (!script.opens) return nullptr;
    script.log += std::string("open ") + (url->path == nullptr ? "" : url->path);
    script.at = 0;
    ++script.opened;
    QX_URLStream* const stream = newStream();
    stream->start = [](QX_URLStream*) { script.log += " start"; };
    stream->getContentLength = [](QX_URLStream*) {
        script.log += " length";
        return script.length;
    };
    stream->read = [](QX_URLStream*, void* destination, int count) {
        script.asked.push_back(count);
        if (script.lie != 0) return script.lie;
        const auto n = script.content.copy(static_cast<char*>(destination), static_cast<std::size_t>(count), script.at);
        script.at += n;
        if (n == 0 && script.error != nullptr) throw Varnex::URLImpl::Exception(script.error);
        return static_cast<int>(n);
    };
    stream->close = [](QX_URLStream*) { script.log += " close"; };
    return stream;
}

/// A scheme of that name while it lives, with an empty script at first.
struct ScriptedScheme {
    explicit ScriptedScheme(const char* name) : name_(name) {
        script = {};
        handler.open = &openScript;
        QX_URLStreamHandlerFactory_registerHandler(name_, &handler);
    }
    ~ScriptedScheme() { QX_URLStreamHandlerFactory_unregisterHandler(name_, &handler); }
    QX_URLStreamHandler handler{};

private:
    const char* name_;
};
