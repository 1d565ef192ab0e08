// A transaction that holds the database's write lock from its beginning, so that what is read in it
// stays true until it ends.
#pragma once

#include "catalogue/SQLite3Wrapper/SQLite3WrapperDB.h"

class ImmediateTransaction {
  public:
    // Waits for other processes' transactions; throws a SQLite3WrapperException when that takes
    // longer than the connection's busy timeout.
    explicit ImmediateTransaction(SQLite3WrapperDB& db);
    ImmediateTransaction(const ImmediateTransaction&) = delete;
    ImmediateTransaction& operator=(const ImmediateTransaction&) = delete;

    // Without a Commit that succeeded, nothing has been done.
    ~ImmediateTransaction();

    void Commit();

  private:
    SQLite3WrapperDB& db_;
    bool ended_ = false;
};
