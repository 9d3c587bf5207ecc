#include <Varnex/transport/InitSocket.h>

#include <Varnex/transport/PrintLine.h>
#include <Varnex/transport/SystemError.h>

#include <cerrno>

namespace Varnex {

// SIG_ERR is a cast and no constant expression, but the compiler fills it in before any constructor runs all the same.
int InitSocket::useCounter_ = 0;
InitSocket::Disposition InitSocket::disp_ = SIG_ERR;

InitSocket::InitSocket() {
    if (useCounter_++ == 0) startup();
}

InitSocket::~InitSocket() {
    if (--useCounter_ == 0) cleanup();
}

void InitSocket::startup() {
    disp_ = std::signal(SIGPIPE, SIG_IGN);
    if (disp_ == SIG_ERR) printError("ERROR: " + withErrno("during signal(SIGPIPE, SIG_IGN)", errno));
}

void InitSocket::cleanup() {
    if (disp_ == SIG_ERR) return;
    if (std::signal(SIGPIPE, disp_) == SIG_ERR)
        printError("ERROR: " + withErrno("during signal(SIGPIPE, disp_)", errno));
}

}  // namespace Varnex
