#include <Varnex/transport/WaitForData.h>

#include <Varnex/transport/PollReadable.h>
#include <Varnex/transport/PrintLine.h>
#include <Varnex/transport/Receiver.h>
#include <Varnex/transport/WakeUpPipe.h>

#include <algorithm>

namespace Varnex {

int waitForData(int fd, WakeUpPipe& wakeUp, int ms, int spinUs, const WaitMessages& messages) {
    if (fd < 0) return Receiver::WaitFailed;
    if (!wakeUp.open()) {
        printError(messages.noPipe);
        return Receiver::WaitFailed;
    }
    bool woken = false;
    bool data = false;
    int ready = 0;
    const int us = std::max(0, ms < 0 ? spinUs : static_cast<int>(std::min<long>(spinUs, ms * 1000L)));
    if (us > 0) ready = spinReadable(wakeUp.readEnd(), fd, us, woken, data);
    const int msLeft = ms > 0 ? ms - us / 1000 : ms;
    if (ready == 0) ready = pollReadable(wakeUp.readEnd(), fd, msLeft, woken, data);
    if (ready == 0) return Receiver::WaitTimedOut;
    if (ready < 0) {
        messages.printNoSelect("ERROR: Cannot select");
        return Receiver::WaitFailed;
    }
    if (woken) {
        wakeUp.consume();
        return Receiver::WaitBroken;
    }
    return data ? Receiver::WaitData : Receiver::WaitFailed;
}

void breakWait(WakeUpPipe& wakeUp, const WaitMessages& messages) {
    if (!wakeUp.open()) printError(messages.noPipe);
    if (!wakeUp.wake()) printError("ERROR: Cannot set event");
}

}  // namespace Varnex
