// Makes a folder the process's current one for the object's lifetime.
//
// The current folder belongs to all threads of the process: whoever uses this orders the uses among
// themselves. A change that fails, or that could not be undone, is passed over.
#pragma once

#include "platform/types.h"

namespace BrevikUtils {

class DllPathManager {
  public:
    // An empty folder changes nothing.
    explicit DllPathManager(const WideString& folder);
    DllPathManager(const DllPathManager&) = delete;
    DllPathManager& operator=(const DllPathManager&) = delete;
    virtual ~DllPathManager();

  private:
    WideString previous_;  // empty when nothing was changed
};

}  // namespace BrevikUtils
