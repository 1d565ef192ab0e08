// The use of the record store by one load of the catalogue, from its beginning to its end.
//
// Some failures of the record store may be gone at the next try: another process holds the
// database, memory or descriptors are short, the disk failed once. Most of its operations report
// them as they report any other failure, on the trace. A load makes one of these objects first, and
// knows at its end whether the list that came of it may be kept.
//
// An object belongs to the thread that made it and counts what that thread does; of objects within
// one another the innermost counts.
#pragma once

#include <exception>
#include <optional>

#include "platform/types.h"

class RecordGathering {
  public:
    // Make it before any lock that another load may hold: what passes until the first statement
    // counts as waiting for the other process that the other load is waiting for.
    RecordGathering();
    RecordGathering(const RecordGathering&) = delete;
    RecordGathering& operator=(const RecordGathering&) = delete;
    ~RecordGathering();

    // Whether something failed that may succeed at the next try: what was gathered is not to be
    // kept.
    bool HasMissed() const { return hasMissed_; }

    // Whether another process held the database for as long as a load waits. No statement of this
    // object waits again, so that the rest of the load is likely to miss too and may be left out.
    bool HasWaitedInVain() const { return hasWaitedInVain_; }

    // ---- For the record store ----

    // How many milliseconds a statement of this thread may wait for other processes now.
    static DWORD LongestWait();

    // Notes a failure in the thread's object, where there is one and the failure may be passing.
    static void Note(const std::exception& failure);

  private:
    RecordGathering* outer_;
    DWORD start_;
    std::optional<DWORD> wait_;  // set by the first statement
    bool hasMissed_ = false;
    bool hasWaitedInVain_ = false;
};
