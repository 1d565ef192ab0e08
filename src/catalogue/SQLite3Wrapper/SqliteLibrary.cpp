#include "catalogue/SQLite3Wrapper/SqliteLibrary.h"

#include <atomic>
#include <memory>
#include <string>

#include "platform/clock.h"
#include "platform/database_library.h"
#include "trace/UTrace.h"

namespace {

constinit std::atomic<const SqliteLibrary*> loaded_library = nullptr;

constinit std::atomic<int> running_calls = 0;
constinit std::atomic<bool> is_stopped = false;

// Runs on the thread that shuts the crypto library down, before that frees anything. A call that
// still waits for another process then never goes on: the process is gone by then.
void StopCalls() {
    constexpr int kLongestWait = 5000;
    is_stopped = true;
    for (int waited = 0; running_calls != 0 && waited < kLongestWait; ++waited) {
        Sleep(1);
    }
}

[[noreturn]] void Fail(const std::string& reason) {
    throw SqliteLibraryMissing(std::string("the database library ") + kDatabaseLibraryName +
                               reason);
}

std::unique_ptr<SqliteLibrary> Load() {
    std::string reason;
    void* const library = LoadDatabaseLibrary(StopCalls, &reason);
    if (library == nullptr) {
        Fail(" cannot be loaded: " + reason);
    }
    const auto find = [library]<typename Function>(const char* name, Function*& function) {
        function = reinterpret_cast<Function*>(FindDatabaseFunction(library, name));
        if (function == nullptr) {
            Fail(std::string(" has no function ") + name);
        }
    };
    auto table = std::make_unique<SqliteLibrary>();
    find("sqlite3_open_v2", table->open_v2);
    find("sqlite3_close", table->close);
    find("sqlite3_key", table->key);
    find("sqlite3_busy_timeout", table->busy_timeout);
    find("sqlite3_exec", table->exec);
    find("sqlite3_prepare", table->prepare);
    find("sqlite3_step", table->step);
    find("sqlite3_finalize", table->finalize);
    find("sqlite3_column_count", table->column_count);
    find("sqlite3_column_text", table->column_text);
    find("sqlite3_get_table", table->get_table);
    find("sqlite3_free_table", table->free_table);
    find("sqlite3_changes", table->changes);
    find("sqlite3_get_autocommit", table->get_autocommit);
    find("sqlite3_errmsg", table->errmsg);
    find("sqlite3_free", table->free);
    return table;
}

// Says once in the process what is missing: most callers go on without the records.
std::unique_ptr<SqliteLibrary> LoadOrSay() {
    static constinit std::atomic<bool> is_said = false;
    try {
        return Load();
    } catch (const SqliteLibraryMissing& failure) {
        if (!is_said.exchange(true)) {
            UTrace::Error("The catalogue is empty: %s", failure.what());
        }
        throw;
    }
}

}  // namespace

// Several threads may load at once and get the same library; one of their tables stays, and is
// never freed: the connection outlives all else.
const SqliteLibrary& SqliteLibrary::Get() {
    const SqliteLibrary* library = loaded_library;
    if (library == nullptr) {
        std::unique_ptr<SqliteLibrary> table = LoadOrSay();
        if (loaded_library.compare_exchange_strong(library, table.get())) {
            library = table.release();
        }
    }
    return *library;
}

bool SqliteLibrary::IsLoaded() {
    return loaded_library != nullptr;
}

SqliteCall::SqliteCall() : library_(SqliteLibrary::Get()) {
    ++running_calls;
    if (is_stopped) {
        --running_calls;
        throw SQLite3WrapperException(kSqliteInterrupt, "the process ends");
    }
}

SqliteCall::~SqliteCall() {
    --running_calls;
}
