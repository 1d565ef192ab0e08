#include "catalogue/ImmediateTransaction.h"

#include <exception>

ImmediateTransaction::ImmediateTransaction(SQLite3WrapperDB& db) : db_(db) {
    db_.Execute("begin immediate");
}

ImmediateTransaction::~ImmediateTransaction() {
    if (ended_) {
        return;
    }
    try {
        db_.Execute("rollback");
    } catch (const std::exception&) {
        // Some failures have ended the transaction themselves.
    }
}

void ImmediateTransaction::Commit() {
    db_.Execute("commit");
    ended_ = true;
}
