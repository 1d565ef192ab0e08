#include "catalogue/SharedFolder.h"

#include "platform/files.h"
#include "text/StringConversions.h"
#include "trace/UTrace.h"

void CreateSharedFolder(const WideString& path) {
    const BOOL made = CreateDirectoryW(path.c_str(), nullptr);
    const DWORD error = GetLastError();
    UTrace::Info("CreateDirectoryW path = %s, result = %s", WideToNarrow(path).c_str(),
                 made ? "TRUE" : "FALSE");
    if (!made) {
        UTrace::Info("GetLastError: %d", static_cast<int>(error));
    }
}

void ShareCertificateFile(const WideString& path) {
    UTrace::Info("SetFileSecurity result = %s)", WideToNarrow(path).c_str());
}
