// The use of the record store by one load of the catalogue, or by one call that makes several.
//
// Some failures of the record store, of certificate files and of the registry may be gone at the
// next try: another process holds the database, memory or descriptors are short, the disk failed
// once. They are reported as any other failure is, on the trace. A load makes one of these objects
// first, and knows at its end whether the list that came of it may be kept.
//
// An object belongs to the thread that made it and counts what that thread does. Of objects within
// one another the innermost notes what was missed, and the outermost how long there is to wait.
#pragma once

#include <exception>
#include <string>

#include "platform/types.h"

class RecordGathering {
  public:
    // Make it before any lock that another load may hold: that one may be waiting for the same
    // process.
    RecordGathering();
    RecordGathering(const RecordGathering&) = delete;
    RecordGathering& operator=(const RecordGathering&) = delete;
    ~RecordGathering();

    // Whether something failed that may succeed at the next try: what was gathered is not to be
    // kept.
    bool HasMissed() const { return !missed_.empty(); }

    // What failed first, for a person to read.
    const std::string& Missed() const { return missed_; }

    // Whether another process held the database for as long as the thread's call waits. None of its
    // statements waits again, so that the rest is likely to miss too and may be left out.
    static bool IsOver();

    // ---- For the record store, and for what reads certificates and the registry ----

    // How many milliseconds a statement of this thread may wait for other processes now. What a
    // call has taken so far counts as waiting: a process that lets go now and then could otherwise
    // make it last as long as it has statements.
    static DWORD LongestWait();

    static bool IsPassing(const std::exception& failure);

    // Notes a failure in the thread's object, where there is one and the failure may be passing.
    static void Note(const std::exception& failure);

    // The same for an error number of the operating system; `what` is what could not be had.
    static void Note(DWORD error, const std::string& what);

  private:
    RecordGathering* const outer_;
    RecordGathering* const outermost_;
    const DWORD start_;
    std::string missed_;
    bool hasWaitedInVain_ = false;  // of the outermost
};
