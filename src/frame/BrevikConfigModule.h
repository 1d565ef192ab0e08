// The library as a module of its process: whether its sibling library is loaded.
#pragma once

#include <atomic>

namespace BrevikConfig {

class BrevikConfigModule {
  public:
    BrevikConfigModule() { LoadSiblingLibrary(); }
    BrevikConfigModule(const BrevikConfigModule&) = delete;
    BrevikConfigModule& operator=(const BrevikConfigModule&) = delete;

    // Unloads nothing: the sibling library stays to the end of the process.
    virtual ~BrevikConfigModule() { Forget(); }

    // Looks for the sibling library and loads it, once: until it was found each call tries again.
    // Any thread; throws std::bad_alloc alone.
    void LoadSiblingLibrary();

    // The sibling library counts as not loaded from here on.
    void Forget() { libraryLoaded = 0; }

  private:
    std::atomic<unsigned char> libraryLoaded = 0;
};

// The one module object, made on first use.
BrevikConfigModule& GetModule();

}  // namespace BrevikConfig
