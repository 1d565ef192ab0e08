// Calls into the sibling library: its name, and the barrier that no exception of its code passes.
#pragma once

#include <exception>
#include <stdexcept>

#include "platform/component_model.h"
#include "text/VelmarException.h"
#include "trace/UTrace.h"

inline constexpr const WCHAR* kServiceLibrary = WIDE("VelmarHTTPClient13.dll");

// Makes the call and gives its result. An exception that comes out of it is written to the trace
// under the operation's name, and gives E_FAIL.
template <typename Call>
HRESULT CallService(const char* operation, Call call) {
    try {
        return call();
    } catch (const std::exception& caught) {
        UTrace::Exception(VelmarException(caught), operation);
    } catch (...) {
        UTrace::Exception(VelmarException(std::runtime_error("unknown exception")), operation);
    }
    return E_FAIL;
}
