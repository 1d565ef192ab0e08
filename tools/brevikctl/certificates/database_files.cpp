#include "brevikctl/certificates/database_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "brevikctl/output/terminal.h"
#include "catalogue/records/DatabasePath.h"
#include "catalogue/records/SharedFolder.h"
#include "platform/database_library.h"
#include "platform/posix/base/scoped_descriptor.h"
#include "platform/posix/paths/paths.h"

namespace {

constexpr mode_t kFolderMode = 01777;
constexpr mode_t kFileMode = 0666;

// Something on the host; nothing is followed.
struct Place {
    explicit Place(std::string place) : path(std::move(place)) {
        isThere = lstat(path.c_str(), &status) == 0;
    }

    bool IsOf(mode_t kind) const { return !isThere || (status.st_mode & S_IFMT) == kind; }
    bool Has(mode_t modes) const { return !isThere || (status.st_mode & modes) == modes; }
    bool IsSomebodyElses() const {
        return isThere && status.st_uid != 0 && status.st_uid != geteuid();
    }
    std::string Owner() const { return "user " + std::to_string(status.st_uid); }

    std::string path;
    bool isThere;
    struct stat status = {};
};

Place Folder() {
    return Place(FindFile(FindDatabaseFolder()).path);
}

// Whether anybody may have made the folder.
bool StandsInOpenFolder(const Place& folder) {
    return (Place(folder.path.substr(0, folder.path.rfind('/'))).status.st_mode & S_IWOTH) != 0;
}

std::string ModeText(mode_t mode) {
    char text[8];
    std::snprintf(text, sizeof text, "%04o", static_cast<unsigned>(mode & 07777));
    return text;
}

// A file beside the folder's others, and what becomes of it once it is moved away.
struct DatabaseFile {
    const char* name;
    const char* mend;
};

constexpr const char* kMakesNewOne = "Move it away; brevikctl machine create makes a new one.";
constexpr const char* kMadeWhenNeeded = "Move it away; programs make a new one when they need it.";
constexpr const char* kJournal = "/qzc13.db-journal";

constexpr DatabaseFile kDatabaseFiles[] = {
    {"/qzc13.db", kMakesNewOne},           {kJournal, kMadeWhenNeeded},
    {"/qzc13.db-wal", kMadeWhenNeeded},    {"/qzc13.db-shm", kMadeWhenNeeded},
    {"/qzc13.db.repair", kMadeWhenNeeded},
};

void CheckPlace(const Place& place, mode_t kind, mode_t mode, const char* mend,
                std::vector<Trouble>* troubles) {
    const bool isFolder = kind == S_IFDIR;
    const std::string name = Quoted(place.path);
    if (!place.IsOf(kind)) {
        troubles->push_back(
            {name + " is a symbolic link or no " + (isFolder ? "folder" : "plain file"), mend});
    } else if (!isFolder && place.status.st_nlink > 1) {
        troubles->push_back({name + " has another name besides", mend});
    } else if (!place.Has(mode)) {
        troubles->push_back(
            {name + " of " + place.Owner() + " has the mode " + ModeText(place.status.st_mode),
             "chmod " + ModeText(mode) + " on it: every user has to be able to write " +
                 (isFolder ? "there, and none to take away another's file." : "to it.")});
    }
}

// Opens a folder or file to every user, and has root take it over where `isTaken`. What others may
// put in its place meanwhile is never followed.
void Mend(const Place& place, mode_t kind, mode_t mode, bool isTaken) {
    const ScopedDescriptor file = OpenDescriptor(place.path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    struct stat status = {};
    const bool isOfKind = file && fstat(file.Get(), &status) == 0 &&
                          (status.st_mode & S_IFMT) == kind &&
                          (kind == S_IFDIR || status.st_nlink == 1);
    if (isOfKind && (status.st_mode & mode) == mode && !isTaken) {
        return;
    }
    if (!isOfKind || (isTaken && fchown(file.Get(), 0, 0) != 0) || fchmod(file.Get(), mode) != 0) {
        Fail(Quoted(place.path) + " cannot be opened to every user", "brevikctl doctor says why.");
    }
}

}  // namespace

void CheckDatabaseFiles(std::vector<Trouble>* troubles) {
    const Place folder = Folder();
    CheckPlace(folder, S_IFDIR, kFolderMode, kMakesNewOne, troubles);
    if (!troubles->empty() || !folder.isThere) {
        return;
    }
    for (const DatabaseFile& file : kDatabaseFiles) {
        CheckPlace(Place(folder.path + file.name), S_IFREG, kFileMode, file.mend, troubles);
    }
    const Place journal(folder.path + kJournal);
    if (folder.IsSomebodyElses() && StandsInOpenFolder(folder)) {
        troubles->push_back({Quoted(folder.path) + " belongs to " + folder.Owner() +
                                 ", who can put another file in the database's place",
                             "Let root run brevikctl machine create, which takes it over."});
    }
    if (journal.IsSomebodyElses() && folder.status.st_uid != geteuid()) {
        troubles->push_back({Quoted(journal.path) + " was left by a program of " + journal.Owner() +
                                 " that was killed",
                             "The next program of that user's or of root's that asks the catalogue "
                             "takes it back."});
    }
}

void MakeDatabaseFiles() {
    if (!Folder().isThere) {
        CreateSharedFolder(FindDatabaseFolder());
    }
    const Place folder = Folder();
    const bool isTaken = geteuid() == 0 && folder.IsSomebodyElses() && StandsInOpenFolder(folder);
    Mend(folder, S_IFDIR, kFolderMode, isTaken);
    // The file is to belong to the folder's owner, so that no other user can take it away.
    MakeSharedFile(DatabaseFileIn(FindDatabaseFolder()).c_str());
    Mend(Place(folder.path + "/qzc13.db"), S_IFREG, kFileMode, false);
}
