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
// waits for another process is left behind: the process is gone before it goes on.
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

// Gives each function its place in the table by name.
class Loader {
  public:
    Loader() {
        std::string reason;
        library_ = LoadDatabaseLibrary(StopCalls, &reason);
        if (library_ == nullptr) {
            Fail(" cannot be loaded: " + reason);
        }
    }

    template <typename Function>
    void Find(const char* name, Function*& function) const {
        function = reinterpret_cast<Function*>(FindDatabaseFunction(library_, name));
        if (function == nullptr) {
            Fail(std::string(" has no function ") + name);
        }
    }

  private:
    void* library_;
};

std::unique_ptr<SqliteLibrary> Load() {
    const Loader loader;
    auto table = std::make_unique<SqliteLibrary>();
    loader.Find("sqlite3_open_v2", table->open_v2);
    loader.Find("sqlite3_close", table->close);
    loader.Find("sqlite3_key", table->key);
    loader.Find("sqlite3_busy_timeout", table->busy_timeout);
    loader.Find("sqlite3_exec", table->exec);
    loader.Find("sqlite3_prepare", table->prepare);
    loader.Find("sqlite3_step", table->step);
    loader.Find("sqlite3_finalize", table->finalize);
    loader.Find("sqlite3_column_count", table->column_count);
    loader.Find("sqlite3_column_text", table->column_text);
    loader.Find("sqlite3_get_table", table->get_table);
    loader.Find("sqlite3_free_table", table->free_table);
    loader.Find("sqlite3_changes", table->changes);
    loader.Find("sqlite3_get_autocommit", table->get_autocommit);
    loader.Find("sqlite3_errmsg", table->errmsg);
    loader.Find("sqlite3_free", table->free);
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
