// Owner of one reference on a component object, and of the library that holds the object's code.
//
// The reference is given back first and the library freed second. Nothing that the object throws
// leaves its release.
#pragma once

#include <utility>

#include "modules/CLibraryUtilsImpl.h"

namespace CLibraryUtils {

template <typename Interface>
class ComponentObject {
  public:
    ComponentObject() = default;

    // Takes over a reference, which may be null, on an object whose library another one holds.
    explicit ComponentObject(Interface* reference) : object_(reference) {}
    ComponentObject(const ComponentObject&) = delete;
    ComponentObject& operator=(const ComponentObject&) = delete;
    ~ComponentObject() { Release(); }

    // Makes an object from a library, as CLibraryUtilsImpl does. What the library throws passes
    // through. REQUIRES: there is no object yet.
    HRESULT CreateInstance(REFCLSID classId, const WCHAR* libraryName, REFIID iid) {
        return library_.CreateInstance(classId, nullptr, libraryName, iid, Out());
    }

    explicit operator bool() const { return object_ != nullptr; }
    Interface* Get() const { return object_; }
    Interface* operator->() const { return object_; }

    // Where an operation puts the reference that it gives. REQUIRES: there is none yet.
    void** Out() { return reinterpret_cast<void**>(&object_); }

    // One more reference, for another holder; null without an object.
    CALLS_FOREIGN_OBJECTS
    Interface* NewReference() const {
        if (object_ != nullptr) {
            object_->AddRef();
        }
        return object_;
    }

    // Gives the reference back and keeps the library.
    CALLS_FOREIGN_OBJECTS
    void Release() noexcept {
        if (Interface* object = std::exchange(object_, nullptr)) {
            try {
                object->Release();
            } catch (...) {
                // The reference counts as given back.
            }
        }
    }

  private:
    CLibraryUtilsImpl library_;  // ends after the object
    Interface* object_ = nullptr;
};

}  // namespace CLibraryUtils
