// The parser of paths, on any text: what it accepts is an absolute path inside a drive or share of
// the machine, the same when it is parsed again. Behind a NUL stands a pattern, whose match with
// the path's name is compared with the plainest reading of the rules.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "filesystem/FileSystem.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/paths/paths.h"
#include "text/VelmarException.h"

namespace {

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

const std::string& PrepareMachine() {
    static const std::string folder = [] {
        FileSystem_Start(nullptr);
        const std::string machine = Machine::Current().Folder();
        std::filesystem::create_directories(machine + "/shares/server/share/folder");
        return machine;
    }();
    return folder;
}

void RequireInside(const HostPlace& place, const std::string& machine) {
    Require(place.path.starts_with(machine + "/drives/") ||
            place.path.starts_with(machine + "/shares/"));
    const std::filesystem::path below = place.path.substr(machine.size() + 1);
    Require(std::none_of(below.begin(), below.end(), [](const std::filesystem::path& name) {
        return name == "." || name == "..";
    }));
}

void CheckPath(const FilePath& text) {
    const std::string& machine = PrepareMachine();
    FileSpec file;
    try {
        file = FileSpec(text);
    } catch (const VelmarException&) {
        return;
    }
    if (file.IsNull()) {
        Require(text.IsEmpty());
        return;
    }
    const WideString path = file.GetPath().ToWide();
    Require((path.back() == u'\\') == file.IsRoot());
    // A separator keeps dots and a blank at the end of a name only until it is taken off.
    if (path.back() != u'.' && path.back() != u' ') {
        Require(FileSpec(file.GetPath()).GetPath() == file.GetPath());
        Require(file.IsRoot() ||
                file.MakeParent().MakeChild(file.GetName()).GetPath() == file.GetPath());
    }
    const HostPlace place = PlaceOf(file.GetNativePath());
    if (place.error == 0) {
        RequireInside(place, machine);
        RequireInside(PlaceOf(path), machine);
        const HostFile found = FindFile(place);
        Require(found.path.empty() || found.path.starts_with(machine));
    }
}

using Bytes = std::basic_string_view<unsigned char>;

bool Matches(Bytes name, Bytes pattern) {
    if (name.empty() || pattern.empty()) {
        return name.empty() && pattern.empty();
    }
    if (pattern[0] != '*') {
        return (pattern[0] == '?' ? name[0] != '.' : name[0] == pattern[0]) &&
               Matches(name.substr(1), pattern.substr(1));
    }
    if (pattern.size() == 1) {
        return true;
    }
    for (; !name.empty(); name.remove_prefix(1)) {
        if (Matches(name, pattern.substr(1))) {
            return true;
        }
    }
    return false;
}

void CheckMatch(const FilePath& text, const FilePath& pattern) {
    const FilePath name = text.GetName();
    bool matches = false;
    try {
        matches = text.IsMatch(pattern, true);
        text.IsMatch(pattern, false);
    } catch (const VelmarException&) {
        Require(pattern.find_first_of(FilePath("/\\").c_str()) != FilePath::npos);
        return;
    }
    // The plain reading takes time that grows with a power of the lengths.
    if (name.size() <= 24 && pattern.size() <= 10) {
        Require(matches == Matches(name, pattern));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Utf8String bytes(data, size);
    const std::size_t nul = std::min(bytes.find('\0'), size);
    const FilePath text(bytes.substr(0, nul));
    CheckPath(text);
    if (nul < size) {
        CheckMatch(text, FilePath(bytes.substr(nul + 1)));
    }
    return 0;
}
