#include <Zendro/Thread.h>

#include <exception>
#include <iostream>
#include <string>
#include <system_error>

namespace Zendro {

namespace {

void printError(const std::string& text) {
    std::cerr << "ERROR: " + text + "\n" << std::flush;
}

}  // namespace

Thread::~Thread() = default;

bool Thread::start() {
    if (thread_.joinable()) return false;
    try {
        thread_ = std::thread(&Thread::run, this);
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

int Thread::join() {
    if (thread_.joinable()) thread_.join();
    return result_;
}

void Thread::run() noexcept {
    try {
        result_ = main();
        return;
    } catch (const std::exception& e) {
        printError(e.what());
    } catch (...) {
        printError("A thread ended with an unknown exception");
    }
    result_ = -1;
}

}  // namespace Zendro
