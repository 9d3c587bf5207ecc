#pragma once

#include <cxxabi.h>

namespace Varnex {

// Private to the library.

/// What `step` gives, or `failed` when it throws: for stream buffers that show failures as the end of the file.
template <class Step, class Result>
Result quietly(Step step, Result failed) {
    try {
        return step();
    } catch (const abi::__forced_unwind&) {
        throw;  // the thread is being cancelled
    } catch (...) {
        return failed;
    }
}

}  // namespace Varnex
