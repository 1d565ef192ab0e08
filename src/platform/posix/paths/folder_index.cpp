#include "platform/posix/paths/folder_index.h"

#include <linux/magic.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <iterator>
#include <memory>
#include <vector>

#include "platform/never_destroyed.h"
#include "platform/posix/base/scoped_descriptor.h"
#include "platform/posix/base/stamped.h"
#include "platform/posix/text/host_text.h"
#include "platform/posix/text/unicode.h"
#include "platform/text.h"

namespace brevik::platform {
namespace {

// A folder with more names than this is read anew each time.
constexpr std::size_t kMostNamesOfFolder = 10'000;

// The bound of all kept listings: names, with a fixed amount for each folder.
constexpr std::size_t kMostNames = 50'000;
constexpr std::size_t kCostOfFolder = 200;

// File systems that stamp a folder at each change, at once and for every process that looks. On any
// other, a name that is missing in a kept listing is asked for as well.
constexpr long kStampingFileSystems[] = {
    EXT4_SUPER_MAGIC, BTRFS_SUPER_MAGIC, TMPFS_MAGIC, OVERLAYFS_SUPER_MAGIC, F2FS_SUPER_MAGIC,
    0x58465342,  // XFS
    0x2FC12FC1,  // ZFS
};

std::u16string Fold(std::string_view name) {
    return UpperCase(WideFromUtf8(name));
}

// FNV-1a over the units of the folded name; nothing for a name that is not well-formed. Nothing is
// allocated, since the first listing of a folder has to be cheap.
std::optional<std::size_t> HashOf(std::string_view name) {
    std::size_t hash = 0xCBF29CE484222325;
    while (!name.empty()) {
        const DecodedCharacter character = DecodeCharacter(name);
        if (!character.wellFormed) {
            return std::nullopt;
        }
        std::array<char16_t, 4> units;
        const std::size_t count = EncodeCharacter(character.value, units);
        CharUpperBuffW(units.data(), static_cast<DWORD>(count));
        for (std::size_t index = 0; index < count; ++index) {
            hash = (hash ^ units[index]) * 0x100000001B3;
        }
        name.remove_prefix(character.length);
    }
    return hash;
}

// Which of two names that both fold to the one looked for is taken.
bool IsBetter(std::string_view candidate, const std::optional<std::string>& best,
              std::string_view exact) {
    return !best || candidate == exact || (*best != exact && candidate < *best);
}

class Listing {
  public:
    Listing(const FileStamp& stamp, bool isComplete) : stamp_(stamp), isComplete_(isComplete) {}

    void Add(std::string_view name, std::size_t hash) {
        names_.push_back({hash, static_cast<std::uint32_t>(bytes_.size()),
                          static_cast<std::uint32_t>(name.size())});
        bytes_ += name;
    }

    // Ends the adding. Find needs it.
    void Sort() {
        std::sort(names_.begin(), names_.end(),
                  [](const Name& a, const Name& b) { return a.hash < b.hash; });
    }

    const FileStamp& Stamp() const { return stamp_; }
    std::size_t Size() const { return names_.size(); }

    // Whether a name that is missing here is missing in the folder too.
    bool IsComplete() const { return isComplete_; }

    std::optional<std::string> Find(const FoldedName& name) const {
        std::optional<std::string> best;
        auto entry =
            std::lower_bound(names_.begin(), names_.end(), name.Hash(),
                             [](const Name& a, std::size_t hash) { return a.hash < hash; });
        for (; entry != names_.end() && entry->hash == name.Hash(); ++entry) {
            const auto candidate = std::string_view(bytes_).substr(entry->begin, entry->size);
            if (IsBetter(candidate, best, name.Name()) && Fold(candidate) == name.Folded()) {
                best = candidate;
            }
        }
        return best;
    }

  private:
    struct Name {
        std::size_t hash;
        std::uint32_t begin;  // in bytes_
        std::uint32_t size;
    };

    FileStamp stamp_;
    bool isComplete_;
    std::vector<Name> names_;
    std::string bytes_;
};

// By a number made from the folder's own and its device's: two folders may share one, and then take
// turns.
using ListingCache = AnswerCache<std::uint64_t, Listing>;

std::uint64_t KeyOf(const FileStamp& stamp) {
    return stamp.number * 31 + stamp.device;
}

ListingCache& Listings() {
    static NeverDestroyed<ListingCache> listings(kMostNames);
    return *listings;
}

bool StampsItsFolders(int folder) {
    struct statfs status;
    return fstatfs(folder, &status) == 0 &&
           std::find(std::begin(kStampingFileSystems), std::end(kStampingFileSystems),
                     static_cast<long>(status.f_type)) != std::end(kStampingFileSystems);
}

// Reads the folder for the name, and keeps what it read where the next change will show.
NameInFolder Scan(const std::string& path, const FoldedName& name) {
    const std::int64_t start = Now();
    const ScopedFolder folder(opendir(path.c_str()));
    struct stat status;
    if (!folder || fstat(dirfd(folder.get()), &status) != 0) {
        return {std::nullopt, false, errno};
    }
    const FileStamp stamp(status);
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
        const std::optional<std::size_t> hash = HashOf(candidate);
        if (hash == name.Hash() && IsBetter(candidate, best.name, name.Name()) &&
            Fold(candidate) == name.Folded()) {
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
        listing->Sort();
        best.lasting = listing->IsComplete();
        Listings().Keep(KeyOf(stamp), listing, listing->Size() + kCostOfFolder);
    }
    return best;
}

}  // namespace

FoldedName::FoldedName(std::string_view name)
    : name_(name), folded_(Fold(name)), hash_(HashOf(name).value_or(0)) {}

NameInFolder FindName(const std::string& folder, const struct stat& status,
                      const FoldedName& name) {
    if (!S_ISDIR(status.st_mode)) {
        return {};
    }
    const FileStamp stamp(status);
    const std::shared_ptr<const Listing> kept = Listings().Find(KeyOf(stamp));
    const Listing* listing = kept && kept->Stamp() == stamp ? kept.get() : nullptr;
    if (listing != nullptr && listing->IsComplete()) {
        return {listing->Find(name), true};
    }
    // A symbolic link that leads nowhere is a name of the folder too.
    struct stat exact;
    if (lstat((folder + '/' + name.Name()).c_str(), &exact) == 0) {
        return {name.Name()};
    }
    return listing != nullptr ? NameInFolder{listing->Find(name)} : Scan(folder, name);
}

}  // namespace brevik::platform
