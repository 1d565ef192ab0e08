#include "platform/posix/folder_index.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/posix/host_text.h"
#include "platform/text.h"

namespace brevik::platform {
namespace {

constexpr std::size_t kMostNamesOfFolder = 10'000;
constexpr std::size_t kMostNames = 50'000;
constexpr std::size_t kMostFolders = 256;

// Twice the coarsest step in which a kernel's time stamps advance.
constexpr std::int64_t kSettlingNanoseconds = 20'000'000;

// File systems that stamp a folder at each change, at once and for every process that looks. Of any
// other one, a name that is missing in a kept listing is asked for as well.
constexpr long kStampingFileSystems[] = {
    EXT4_SUPER_MAGIC, BTRFS_SUPER_MAGIC, TMPFS_MAGIC, OVERLAYFS_SUPER_MAGIC, F2FS_SUPER_MAGIC,
    0x58465342,  // XFS
    0x2FC12FC1,  // ZFS
};

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};
using ScopedFolder = std::unique_ptr<DIR, CloseFolder>;

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char byte) { return static_cast<signed char>(byte) >= 0; });
}

std::u16string Fold(std::u16string text) {
    CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

// Empty for a name that is not well-formed.
std::u16string FoldHostName(std::string_view name) {
    std::u16string wide = WideFromUtf8(name);
    if (!IsAscii(name) && Utf8FromWide(wide) != name) {
        return {};
    }
    return Fold(std::move(wide));
}

// FNV-1a over the units of a folded name.
constexpr std::size_t kHashStart = 0xCBF29CE484222325;

constexpr std::size_t HashOn(std::size_t hash, char16_t unit) {
    return (hash ^ unit) * 0x100000001B3;
}

std::size_t HashOf(std::u16string_view folded) {
    std::size_t hash = kHashStart;
    for (const char16_t unit : folded) {
        hash = HashOn(hash, unit);
    }
    return hash;
}

// The hash of a host's name as it is folded; nothing for one that is never found. Most names are
// plain ASCII, and a folder's first listing has to be cheap.
std::optional<std::size_t> HashOfHostName(std::string_view name) {
    std::size_t hash = kHashStart;
    for (const char byte : name) {
        if (static_cast<unsigned char>(byte) >= 0x80) {
            const std::u16string folded = FoldHostName(name);
            return folded.empty() ? std::nullopt : std::optional(HashOf(folded));
        }
        const bool isLower = byte >= 'a' && byte <= 'z';
        hash = HashOn(hash, static_cast<char16_t>(isLower ? byte - ('a' - 'A') : byte));
    }
    return hash;
}

// The better one of two names that both fold to the one looked for.
bool IsBetter(std::string_view candidate, const std::optional<std::string>& best,
              std::string_view exact) {
    return !best || candidate == exact || (*best != exact && candidate < *best);
}

class Listing {
  public:
    Listing(const FolderStamp& stamp, bool complete) : stamp_(stamp), complete_(complete) {}

    void Add(std::string_view name, std::size_t hash) {
        names_.push_back({hash, static_cast<std::uint32_t>(bytes_.size()),
                          static_cast<std::uint32_t>(name.size())});
        bytes_ += name;
    }

    // Ends the adding; a look-up needs it.
    void Seal() {
        std::sort(names_.begin(), names_.end(),
                  [](const Name& a, const Name& b) { return a.hash < b.hash; });
    }

    const FolderStamp& Stamp() const { return stamp_; }
    std::size_t Size() const { return names_.size(); }

    // Whether a name that is missing here is missing in the folder too.
    bool IsComplete() const { return complete_; }

    std::optional<std::string> Find(const FoldedName& name) const {
        std::optional<std::string> best;
        auto entry =
            std::lower_bound(names_.begin(), names_.end(), name.Hash(),
                             [](const Name& a, std::size_t hash) { return a.hash < hash; });
        for (; entry != names_.end() && entry->hash == name.Hash(); ++entry) {
            const auto candidate = std::string_view(bytes_).substr(entry->begin, entry->size);
            if (IsBetter(candidate, best, name.Name()) &&
                FoldHostName(candidate) == name.Folded()) {
                best = candidate;
            }
        }
        return best;
    }

  private:
    FolderStamp stamp_;
    bool complete_;
    struct Name {
        std::size_t hash;
        std::uint32_t begin;  // in bytes_
        std::uint32_t size;
    };
    std::vector<Name> names_;
    std::string bytes_;
};

class ListingCache {
  public:
    static ListingCache& Current() {
        // Never destroyed: a thread may still be looking while the process ends.
        static ListingCache& cache = *new ListingCache;
        return cache;
    }

    // The listing of the folder in its present state; null without one.
    std::shared_ptr<const Listing> Find(const FolderStamp& stamp) {
        const std::lock_guard lock(mutex_);
        const auto found = listings_.find({stamp.device, stamp.number});
        return found != listings_.end() && found->second->Stamp() == stamp ? found->second
                                                                           : nullptr;
    }

    void Keep(std::shared_ptr<const Listing> listing) {
        const std::lock_guard lock(mutex_);
        if (listings_.size() >= kMostFolders || names_ + listing->Size() > kMostNames) {
            listings_.clear();
            names_ = 0;
        }
        std::shared_ptr<const Listing>& place =
            listings_[{listing->Stamp().device, listing->Stamp().number}];
        names_ += listing->Size() - (place ? place->Size() : 0);
        place = std::move(listing);
    }

  private:
    using Key = std::pair<dev_t, ino_t>;
    struct HashKey {
        std::size_t operator()(const Key& key) const {
            return std::hash<std::uint64_t>()(key.second * 31 + key.first);
        }
    };

    std::mutex mutex_;
    std::unordered_map<Key, std::shared_ptr<const Listing>, HashKey> listings_;
    std::size_t names_ = 0;
};

bool StampsItsFolders(int folder) {
    struct statfs status;
    return fstatfs(folder, &status) == 0 &&
           std::find(std::begin(kStampingFileSystems), std::end(kStampingFileSystems),
                     static_cast<long>(status.f_type)) != std::end(kStampingFileSystems);
}

// Reads the folder for the name, and keeps what it read where that stays true.
NameInFolder Scan(const std::string& path, const FoldedName& name) {
    timespec start;
    clock_gettime(CLOCK_REALTIME, &start);
    const ScopedFolder folder(opendir(path.c_str()));
    struct stat status;
    if (!folder || fstat(dirfd(folder.get()), &status) != 0) {
        return {std::nullopt, false, errno};
    }
    const FolderStamp stamp(status);
    std::shared_ptr<Listing> listing;
    if (stamp.IsSettledAt(start)) {
        listing = std::make_shared<Listing>(stamp, StampsItsFolders(dirfd(folder.get())));
    }
    NameInFolder best;
    for (;;) {
        errno = 0;
        const dirent* const entry = readdir(folder.get());
        if (entry == nullptr) {
            break;
        }
        const std::string_view candidate = entry->d_name;
        const std::optional<std::size_t> hash = HashOfHostName(candidate);
        if (hash == name.Hash() && IsBetter(candidate, best.name, name.Name()) &&
            FoldHostName(candidate) == name.Folded()) {
            best.name = candidate;
        }
        if (listing && listing->Size() == kMostNamesOfFolder) {
            listing = nullptr;
        } else if (listing && hash) {
            listing->Add(candidate, *hash);
        }
    }
    if (errno != 0) {
        return {std::nullopt, false, errno};
    }
    if (listing) {
        listing->Seal();
        best.lasting = listing->IsComplete();
        ListingCache::Current().Keep(std::move(listing));
    }
    return best;
}

bool operator==(const timespec& left, const timespec& right) {
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

std::int64_t NanosecondsBetween(const timespec& from, const timespec& to) {
    return (to.tv_sec - from.tv_sec) * 1'000'000'000 + (to.tv_nsec - from.tv_nsec);
}

}  // namespace

FolderStamp::FolderStamp(const struct stat& status)
    : device(status.st_dev),
      number(status.st_ino),
      modified(status.st_mtim),
      changed(status.st_ctim) {}

bool FolderStamp::operator==(const FolderStamp& other) const {
    return device == other.device && number == other.number && modified == other.modified &&
           changed == other.changed;
}

bool FolderStamp::IsSettledAt(const timespec& moment) const {
    return NanosecondsBetween(modified, moment) > kSettlingNanoseconds &&
           NanosecondsBetween(changed, moment) > kSettlingNanoseconds;
}

FoldedName::FoldedName(std::string_view name)
    : name_(name), folded_(Fold(WideFromUtf8(name))), hash_(HashOf(folded_)) {}

NameInFolder FindName(const std::string& folder, const struct stat& status,
                      const FoldedName& name) {
    if (!S_ISDIR(status.st_mode)) {
        return {};
    }
    const std::shared_ptr<const Listing> listing =
        ListingCache::Current().Find(FolderStamp(status));
    if (listing && listing->IsComplete()) {
        return {listing->Find(name), true};
    }
    // A symbolic link that leads nowhere is a name of the folder too.
    struct stat exact;
    if (lstat((folder + '/' + name.Name()).c_str(), &exact) == 0) {
        return {name.Name()};
    }
    return listing ? NameInFolder{listing->Find(name)} : Scan(folder, name);
}

}  // namespace brevik::platform
