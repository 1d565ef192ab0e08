// The function tracers.

#include <cstdio>
#include <utility>

#include "trace/TraceOutput.h"
#include "trace/TraceState.h"
#include "trace/UTrace.h"

namespace UTrace {
namespace {

constexpr int kFunctionLevel = 4;
constexpr std::size_t kResultCapacity = 1024;

std::string ClientName() {
    char name[64];
    GetClientName(name, sizeof name);
    return name;
}

}  // namespace

ITrace::ITrace(std::string client, const char* name)
    : client_(std::move(client)), name_(name != nullptr ? name : ""), savedDepth_(Depth()) {}

void ITrace::Enter(const char* format, va_list arguments) {
    if (format != silent) {
        // A failing trace must not reach the traced function.
        try {
            const VelmarAutoCriticalSection hold(Lock());
            const std::string text = name_ + " - " + (format != nullptr ? format : "enter");
            Emit(client_.c_str(), kFunctionLevel, 0, 0, text.c_str(), arguments);
        } catch (const std::exception&) {
        }
    }
    ++Depth();
}

ITrace::~ITrace() {
    Depth() = savedDepth_;
    if (silent_) {
        return;
    }
    try {
        const VelmarAutoCriticalSection hold(Lock());
        const std::string format = name_ + (resultText_.empty() ? " - return" : " - %s");
        EmitFormatted(client_.c_str(), kFunctionLevel, format.c_str(), resultText_.c_str());
    } catch (const std::exception&) {
    }
}

long ITrace::Return(long value, const char* format, ...) {
    if (format == silent) {
        silent_ = true;
    } else {
        char text[kResultCapacity];
        text[0] = '\0';
        if (format == nullptr) {
            std::snprintf(text, sizeof text, "return = %ld", value);
        } else {
            va_list arguments;
            va_start(arguments, format);
            std::vsnprintf(text, sizeof text, format, arguments);
            va_end(arguments);
        }
        resultText_ = text;
    }
    result_ = value;
    return value;
}

Function::Function(const char* name, const char* format, ...) : ITrace(ClientName(), name) {
    va_list arguments;
    va_start(arguments, format);
    Enter(format, arguments);
    va_end(arguments);
}

FunctionComponent::FunctionComponent(const char* client, const char* name, const char* format, ...)
    : ITrace(client != nullptr ? client : "", name) {
    va_list arguments;
    va_start(arguments, format);
    Enter(format, arguments);
    va_end(arguments);
}

}  // namespace UTrace
