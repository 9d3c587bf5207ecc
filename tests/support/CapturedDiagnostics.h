#pragma once

#include <Varnex/transport/Diagnostics.h>

#include <mutex>
#include <string>

/// Collects what the library prints while it lives, from any thread; one object at a time.
class CapturedDiagnostics {
public:
    CapturedDiagnostics() : previous_(Varnex::setDiagnosticSink(&take)) { texts_[0] = texts_[1] = ""; }
    ~CapturedDiagnostics() { Varnex::setDiagnosticSink(previous_); }

    /// Everything since construction, line ends included.
    std::string errors() const { return add(Varnex::DiagnosticStream::Error, ""); }
    std::string output() const { return add(Varnex::DiagnosticStream::Output, ""); }

private:
    static void take(Varnex::DiagnosticStream stream, std::string_view text) { add(stream, text); }
    static std::string add(Varnex::DiagnosticStream stream, std::string_view text) {
        const std::lock_guard lock(mutex_);
        return texts_[static_cast<int>(stream)] += text;
    }
    static inline std::mutex mutex_;
    static inline std::string texts_[2];
    Varnex::DiagnosticSink previous_;
};
