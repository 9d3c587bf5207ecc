#include <Varnex/transport/Wait.h>

#include <Varnex/transport/PollReadable.h>
#include <Varnex/transport/PrintLine.h>

namespace Varnex {

Wait::~Wait() = default;

bool Wait::open() {
    close();
    if (pipe_.open()) return true;
    printError("ERROR: While opening pipe!");
    return false;
}

bool Wait::close() {
    pipe_.close();
    return true;
}

bool Wait::wait(int ms) {
    const int ready = ms < 0 ? -1 : pollReadable(pipe_.readEnd(), ms);
    if (ready == 0) return true;
    if (ready < 0) {
        printOutput("ERROR: Cannot select");
        return false;
    }
    pipe_.consume();
    return false;
}

void Wait::breakWait() {
    if (!pipe_.wake()) printError("ERROR: Cannot set event");
}

}  // namespace Varnex
