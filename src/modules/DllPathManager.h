// Makes a folder the process's current one for the object's lifetime.
//
// Objects may end in any order, on any thread: the current folder, which all threads share, is that
// of the latest object left, and at last the one before them all. A change that fails is ignored.
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
