// A tickler for an operation that counts items.
#pragma once

#include "filesystem/ticklers/Tickler.h"

class CountedTickler : public Tickler {
  public:
    // Reports through the range of `tickler`: `total` items are to come, and every `stride`-th of
    // them is reported; with a stride of 0 none is.
    CountedTickler(const Tickler& tickler, std::uint32_t total, std::uint32_t stride)
        : Tickler(tickler), total_(total), stride_(stride) {}

    // One more item is done. Items above the total are not reported.
    void Count() {
        ++count_;
        if (stride_ != 0 && count_ % stride_ == 0 && count_ <= total_) {
            SetProgress(static_cast<double>(count_) / total_);
        }
    }

  private:
    std::uint32_t count_ = 0;
    std::uint32_t total_;
    std::uint32_t stride_;
};
