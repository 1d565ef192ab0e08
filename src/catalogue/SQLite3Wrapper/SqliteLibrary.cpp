#include "catalogue/SQLite3Wrapper/SqliteLibrary.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

#include "platform/database_library.h"
#include "trace/UTrace.h"

namespace {

// Gives each function its place in the table by name.
class Loader {
  public:
    Loader() {
        std::string reason;
        library_ = LoadDatabaseLibrary(&reason);
        if (library_ == nullptr) {
            throw SqliteLibraryMissing(std::string("the database library ") + kDatabaseLibraryName +
                                       " cannot be loaded: " + reason);
        }
    }

    template <typename Function>
    void Find(const char* name, Function*& function) const {
        function = reinterpret_cast<Function*>(FindDatabaseFunction(library_, name));
        if (function == nullptr) {
            throw SqliteLibraryMissing(std::string("the database library ") + kDatabaseLibraryName +
                                       " has no function " + name);
        }
    }

  private:
    void* library_;
};

std::unique_ptr<SqliteLibrary> Load() {
    const Loader loader;
    auto table = std::make_unique<SqliteLibrary>();
    loader.Find("sqlite3_open", table->open);
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

// Says once in the process what is missing: most of who asks for a record passes a failure by.
// REQUIRES: the loading mutex.
std::unique_ptr<SqliteLibrary> LoadOrTell() {
    static constinit bool is_told = false;
    try {
        return Load();
    } catch (const SqliteLibraryMissing& failure) {
        if (!is_told) {
            is_told = true;
            UTrace::Error("The catalogue is empty: %s", failure.what());
        }
        throw;
    }
}

constinit std::atomic<const SqliteLibrary*> loaded_library = nullptr;

std::mutex& LoadingMutex() {
    static std::mutex& mutex = *new std::mutex;
    return mutex;
}

}  // namespace

const SqliteLibrary& SqliteLibrary::Get() {
    const SqliteLibrary* library = loaded_library.load(std::memory_order_acquire);
    if (library == nullptr) {
        const std::lock_guard lock(LoadingMutex());
        library = loaded_library.load(std::memory_order_relaxed);
        if (library == nullptr) {
            library = LoadOrTell().release();  // never freed: the connection outlives all else
            loaded_library.store(library, std::memory_order_release);
        }
    }
    return *library;
}
