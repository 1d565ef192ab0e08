// Locks: an abstract base, the platform's critical section, and a scoped holder.
//
// A thread may take a lock that it already holds; it releases the lock as many times as it took it.
#pragma once

#include "platform/threads.h"

class BaseCriticalSection {
  public:
    BaseCriticalSection() = default;
    BaseCriticalSection(const BaseCriticalSection&) = delete;
    BaseCriticalSection& operator=(const BaseCriticalSection&) = delete;
    virtual ~BaseCriticalSection() = default;

    virtual void Lock() = 0;
    virtual void Unlock() = 0;
};

class WinCriticalSection : public BaseCriticalSection {
  public:
    WinCriticalSection() { InitializeCriticalSection(&section_); }
    ~WinCriticalSection() override { DeleteCriticalSection(&section_); }

    void Lock() override { EnterCriticalSection(&section_); }
    void Unlock() override { LeaveCriticalSection(&section_); }

  private:
    CRITICAL_SECTION section_;
};

// The lock that guards the library's own objects.
class VelmarCriticalSection : public WinCriticalSection {
  public:
    ~VelmarCriticalSection() override = default;
};

// Holds a lock for its own lifetime; with a null pointer it does nothing.
class VelmarAutoCriticalSection {
  public:
    explicit VelmarAutoCriticalSection(BaseCriticalSection* section) : section_(section) {
        if (section_ != nullptr) {
            section_->Lock();
        }
    }
    VelmarAutoCriticalSection(const VelmarAutoCriticalSection&) = delete;
    VelmarAutoCriticalSection& operator=(const VelmarAutoCriticalSection&) = delete;
    virtual ~VelmarAutoCriticalSection() {
        if (section_ != nullptr) {
            section_->Unlock();
        }
    }

  private:
    BaseCriticalSection* section_;
};
