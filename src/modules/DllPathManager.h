// Makes a folder the process's current one for the object's lifetime.
//
// The current folder belongs to all threads of the process. Objects may end in any order, on any
// thread: the current folder is that of the latest object that has not ended, and the one that was
// current before them all when the last one ends. A change that fails is passed over.
#pragma once

#include "platform/folders.h"
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
    KeptFolder previous_;              // empty when nothing was changed
    DllPathManager* later_ = nullptr;  // the next object that has made a folder current since
    DllPathManager* earlier_ = nullptr;
};

}  // namespace BrevikUtils
