// An object that lives until the process ends.
#pragma once

#include <new>
#include <utility>

// Makes an object and never destroys it: a thread of the host may still call when the objects of
// static storage are destroyed at the end of the process.
template <typename T>
class NeverDestroyed {
  public:
    template <typename... Arguments>
    explicit NeverDestroyed(Arguments&&... arguments) {
        new (storage_) T(std::forward<Arguments>(arguments)...);
    }
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    T& operator*() { return *std::launder(reinterpret_cast<T*>(storage_)); }
    T* operator->() { return &**this; }

  private:
    alignas(T) unsigned char storage_[sizeof(T)];
};
