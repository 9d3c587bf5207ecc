#include <Varnex/transport/Diagnostics.h>

#include <Varnex/transport/Exception.h>
#include <Varnex/transport/PrintLine.h>

#include <Zendro/Thread.h>

#include <atomic>
#include <cerrno>
#include <exception>
#include <iostream>
#include <string>

namespace Varnex {

namespace {

void printToStandardStreams(DiagnosticStream stream, std::string_view text) {
    static const std::ios_base::Init streamsExist;  // also for a static object that prints before ours are made
    std::ostream& out = stream == DiagnosticStream::Error ? std::cerr : std::cout;
    out.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
}

constinit std::atomic<DiagnosticSink> currentSink = &printToStandardStreams;

void print(DiagnosticStream stream, std::string_view text) {
    const int savedErrno = errno;
    currentSink.load(std::memory_order_acquire)(stream, text);
    errno = savedErrno;
}

void printLine(DiagnosticStream stream, std::string_view line) {
    std::string text(line);
    text += '\n';
    print(stream, text);
}

const bool threadFailuresAreReported = (Zendro::Thread::setFailureHandler(&printCaughtException), true);

}  // namespace

DiagnosticSink setDiagnosticSink(DiagnosticSink sink) {
    const DiagnosticSink previous = currentSink.exchange(sink ? sink : &printToStandardStreams);
    return previous == &printToStandardStreams ? nullptr : previous;
}

void printCaughtException() {
    try {
        throw;
    } catch (const Exception& e) {
        printError(std::string("ERROR: ") + e.what());
    } catch (const std::exception& e) {
        printError(std::string("ERROR: ") + e.what());
    } catch (...) {
        printError("ERROR: Unknown exception");
    }
}

void printError(std::string_view line) {
    printLine(DiagnosticStream::Error, line);
}

void printOutput(std::string_view line) {
    printLine(DiagnosticStream::Output, line);
}

void printOutputPart(std::string_view text) {
    print(DiagnosticStream::Output, text);
}

}  // namespace Varnex
