#pragma once

#include <tests/support/FailingCall.h>

#include <cerrno>

// A close(2) that fails has closed all the same.
#define VARNEX_WRAP(Result, name, parameters, arguments)        \
    extern "C" Result __real_##name parameters;                 \
    extern "C" Result __wrap_##name parameters {                \
        const auto* script = FailingCall::due(Call::name);      \
        if (script == nullptr) return __real_##name arguments;  \
        if (Call::name == Call::close) __real_##name arguments; \
        return (Result)(long)script->result;                    \
    }
