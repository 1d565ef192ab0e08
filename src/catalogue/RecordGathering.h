// The use of the record store by one load of the catalogue, or by one call that makes several.
//
// Some failures may be gone at the next try: another process holds the database, memory or
// descriptors are short, the disk failed once. A load makes one of these objects first, and knows
// at its end whether its list may be kept.
//
// An object counts what its thread does. Of nested objects the innermost notes what was missed, and
// the outermost how long there is to wait.
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
    // kept. Missed() is what failed first, for a person to read.
    bool HasMissed() const { return !missed_.empty(); }
    const std::string& Missed() const { return missed_; }

    // Whether another process held the database for as long as the thread's call waits. No
    // statement waits again, so that the rest may be left out.
    static bool IsOver();

    // How many milliseconds a statement of this thread may wait for other processes now. All that
    // a call has taken so far counts: a process that lets go now and then could otherwise make it
    // wait for each of its statements.
    static DWORD LongestWait();

    // Whether the next try may succeed.
    static bool IsPassing(const std::exception& failure);

    // Notes a passing failure in the thread's object, where there is one; `what` is what the error
    // number of the operating system is about.
    static void Note(const std::exception& failure);
    static void Note(DWORD error, const std::string& what);

  private:
    RecordGathering* const outer_;
    RecordGathering* const outermost_;
    const DWORD start_;
    std::string missed_;
    bool hasWaitedInVain_ = false;  // of the outermost
};
