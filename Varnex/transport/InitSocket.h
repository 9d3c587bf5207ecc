#pragma once

#include <Varnex/Export.h>

#include <csignal>

namespace Varnex {

/// Keeps a write to a closed connection from ending the process: SIGPIPE is ignored while at least one object exists.
///
/// The library holds one object from its load to its unload. Create and destroy others only while no thread is doing
/// the same.
class VARNEX_API InitSocket {
public:
    InitSocket();
    ~InitSocket();
    InitSocket(const InitSocket&) = delete;
    InitSocket& operator=(const InitSocket&) = delete;

    /// Ignores SIGPIPE and keeps the disposition found. An ERROR line on failure.
    static void startup();

    /// Restores the disposition that `startup` found. An ERROR line on failure.
    static void cleanup();

private:
    using Disposition = void (*)(int);

    static int useCounter_;
    static Disposition disp_;  // SIG_ERR when none is kept
};

}  // namespace Varnex
