#pragma once

#include <Varnex/transport/Diagnostics.h>

#include <mutex>
#include <string>

/// Collects what the library prints while it lives, from any thread; one object at a time.
class CapturedDiagnostics {
public:
    CapturedDiagnostics() {
        errors_.clear();
        output_.clear();
        previous_ = Varnex::setDiagnosticSink(&take);
    }
    ~CapturedDiagnostics() { Varnex::setDiagnosticSink(previous_); }
    CapturedDiagnostics(const CapturedDiagnostics&) = delete;
    CapturedDiagnostics& operator=(const CapturedDiagnostics&) = delete;

    /// Everything since construction, line ends included.
    std::string errors() const { return read(errors_); }
    std::string output() const { return read(output_); }

private:
    static void take(Varnex::DiagnosticStream stream, std::string_view text) {
        const std::lock_guard lock(mutex_);
        (stream == Varnex::DiagnosticStream::Error ? errors_ : output_) += text;
    }
    static std::string read(const std::string& text) {
        const std::lock_guard lock(mutex_);
        return text;
    }

    static inline std::mutex mutex_;
    static inline std::string errors_;
    static inline std::string output_;
    Varnex::DiagnosticSink previous_ = nullptr;
};
