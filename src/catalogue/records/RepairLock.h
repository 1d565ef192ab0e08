// The right to replace a damaged database: one process of the machine at a time.
//
// A process that dies gives it up.
#pragma once

#include <string>

#include "platform/files.h"

class RepairLock {
  public:
    // Waits for other holders. Throws a SQLite3WrapperException when that takes longer than a
    // statement would wait for another process, or when the lock cannot be had at all.
    explicit RepairLock(const std::string& databasePath);
    RepairLock(const RepairLock&) = delete;
    RepairLock& operator=(const RepairLock&) = delete;
    ~RepairLock();

  private:
    HANDLE file_;
};
