#include <Varnex/url/CurlPool.h>

#include <Zendro/Mutex.h>

#include <algorithm>
#include <deque>
#include <utility>

#include <unistd.h>

namespace Varnex::CurlPool {

namespace {

struct Idle {
    std::string server;
    CurlMultiHandle handle;
};

struct Pool {
    Zendro::Mutex mutex;
    std::deque<Idle> idle VARNEX_GUARDED_BY(mutex);
    pid_t process VARNEX_GUARDED_BY(mutex) = ::getpid();
};

Pool& pool() {
    static Pool& only = *new Pool;  // also for static objects that read URLs at the end of the process
    return only;
}

/// After a fork the connections are the parent's: they are not even closed, which would speak to the server.
void forgetParents(Pool& pool) VARNEX_REQUIRES(pool.mutex) {
    if (std::exchange(pool.process, ::getpid()) == ::getpid()) return;
    for (Idle& idle : pool.idle) static_cast<void>(idle.handle.release());
    pool.idle.clear();
}

}  // namespace

CurlMultiHandle take(const std::string& server) {
    const Zendro::MutexLock lock(pool().mutex);
    forgetParents(pool());
    std::deque<Idle>& idle = pool().idle;
    const auto found = std::find_if(idle.begin(), idle.end(), [&](const Idle& one) { return one.server == server; });
    if (found == idle.end()) return CurlMultiHandle(curl_multi_init());
    CurlMultiHandle handle = std::move(found->handle);
    idle.erase(found);
    return handle;
}

void keep(const std::string& server, CurlMultiHandle handle) {
    CurlMultiHandle oldest;  // closed without the lock
    const Zendro::MutexLock lock(pool().mutex);
    forgetParents(pool());
    pool().idle.push_back({server, std::move(handle)});
    if (pool().idle.size() <= kMaxIdle) return;
    oldest = std::move(pool().idle.front().handle);
    pool().idle.pop_front();
}

}  // namespace Varnex::CurlPool
