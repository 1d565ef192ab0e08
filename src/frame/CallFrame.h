// The frame that every exported function runs in.
//
// It makes the component model usable on the calling thread, starts the file library and the trace
// on the first call in the process, loads the sibling library, and runs the call, whose catalogue
// loads wait for other processes as if they were one. No exception passes: it is written to the
// trace and becomes the call's failure result.
#pragma once

#include "catalogue/RecordGathering.h"
#include "frame/BrevikConfigModule.h"
#include "modules/SmartComInitializer.h"
#include "platform/threads.h"

namespace BrevikConfig {

// Runs the one-time start. When it returns, on whatever thread, the start has ended. A failure to
// start the file library is written to the trace, and the next call starts that again.
void StartFrame();

// Writes the exception being handled to the trace.
void ReportException(const char* exportName) noexcept;

// `writeLine` writes the export's own trace line; `forward` does the work and gives the result.
template <typename Result, typename WriteLine, typename Forward>
Result RunCall(const char* exportName, Result failure, WriteLine writeLine,
               Forward forward) noexcept {
    const UnbrokenCall unbroken;
    const CLibraryUtils::SmartComInitializer componentModel;
    try {
        StartFrame();
        writeLine();
        GetModule().LoadSiblingLibrary();
        const RecordGathering waitsOnce;
        return forward();
    } catch (...) {
        ReportException(exportName);
        return failure;
    }
}

}  // namespace BrevikConfig
