// Makes the component model usable on the calling thread for the object's lifetime.
//
// A thread that is in an apartment already, of either kind, keeps it, and finds it afterwards as
// before. The object must end on the thread that made it.
#pragma once

#include "platform/component_model.h"

namespace CLibraryUtils {

class SmartComInitializer {
  public:
    SmartComInitializer() : result_(CoInitialize(nullptr)) {}
    SmartComInitializer(const SmartComInitializer&) = delete;
    SmartComInitializer& operator=(const SmartComInitializer&) = delete;
    virtual ~SmartComInitializer() {
        // Of all results this one alone means that the call was not counted.
        if (result_ != RPC_E_CHANGED_MODE) {
            CoUninitialize();
        }
    }

  private:
    HRESULT result_;
};

}  // namespace CLibraryUtils
