// The library as a module of its process: whether its sibling library is loaded.
#pragma once

#include <atomic>

namespace BrevikConfig {

class BrevikConfigModule {
  public:
    BrevikConfigModule() = default;
    BrevikConfigModule(const BrevikConfigModule&) = delete;
    BrevikConfigModule& operator=(const BrevikConfigModule&) = delete;

    // Unloads nothing: the sibling library stays to the end of the process.
    virtual ~BrevikConfigModule() = default;

    // Looks for the sibling library and loads it, once: until it was found each call tries again.
    // Any thread, and again on the same one: the library may call an export while it is loaded, so
    // no lock is held. Throws std::bad_alloc alone.
    void LoadSiblingLibrary();

  private:
    std::atomic<unsigned char> libraryLoaded = 0;
};

// The one module object, made on first use.
BrevikConfigModule& GetModule();

}  // namespace BrevikConfig
