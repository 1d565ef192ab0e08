#include "brevikctl/files/file_report.h"

#include <cstdio>
#include <vector>

#include "brevikctl/files/file_argument.h"
#include "brevikctl/output/terminal.h"
#include "filesystem/FileException.h"
#include "filesystem/FileSpec_Impl.h"
#include "filesystem/VolumeInfo.h"
#include "filesystem/Volume_IF.h"
#include "text/Texts.h"

namespace {

struct AttributeName {
    std::uint32_t bit;
    char letter;
    const char* name;
};
constexpr AttributeName kAttributes[] = {{FileAttributes::kReadOnly, 'r', "read-only"},
                                         {FileAttributes::kHidden, 'h', "hidden"},
                                         {FileAttributes::kSystem, 's', "system"},
                                         {FileAttributes::kArchive, 'a', "archive"}};

std::string Fields(const DateTime& time, const char* format) {
    char text[64];
    std::snprintf(text, sizeof text, format, time.GetDate().GetYear(), time.GetDate().GetMonth(),
                  time.GetDate().GetDay(), time.GetTime().GetHour(), time.GetTime().GetMinute(),
                  time.GetTime().GetSecond());
    return text;
}

std::string LocalTime(const DateTime& time) {
    return Fields(time, "%04d-%02d-%02d %02d:%02d:%02d");
}

std::string UniversalTime(DateTime time) {
    time.ConvertToZone(TimeZone());
    return Fields(time, "\"%04d-%02d-%02dT%02d:%02d:%02dZ\"");
}

Fact TimeFact(const char* name, const DateTime& time) {
    return {name, LocalTime(time), UniversalTime(time)};
}

Fact AttributesFact(std::uint32_t attributes) {
    std::vector<std::string> names;
    std::string text;
    for (const AttributeName& attribute : kAttributes) {
        if ((attributes & attribute.bit) != 0) {
            names.emplace_back(attribute.name);
            text += (text.empty() ? "" : " ") + names.back();
        }
    }
    return {"attributes", text.empty() ? "none" : text, ToArray(names, JsonString)};
}

// False for what has a name and attributes and still cannot be found.
bool ReadSize(const FileSpec& file, std::uint64_t* size) {
    try {
        *size = file.GetFileSize();
        return true;
    } catch (const FileException& failure) {
        if (failure.GetNumber() == Texts::fileNotFound.GetId() ||
            failure.GetNumber() == Texts::filePathNotFound.GetId()) {
            return false;
        }
        throw;
    }
}

}  // namespace

FileReport::FileReport(const FileSpec& file)
    : path(PlainText(file.GetPath())),
      name(PlainText(file.GetName())),
      host(HostPath(file)),
      isFolder(file.IsFolder()),
      isShortcut(!isFolder && file.IsAlias()),
      attributes(file.GetAttributes()) {
    if (!isFolder) {
        isBrokenLink = !ReadSize(file, &size);
    }
    const FileSpec_IF& details = *FileSpec_Impl(file).Get();
    created = details.GetCreationTime();
    accessed = details.GetAccessTime();
    modified = details.GetModificationTime();
}

Facts FileReport::ToFacts() const {
    const char* const kind = isFolder       ? "folder"
                             : isBrokenLink ? "broken link"
                             : isShortcut   ? "shortcut"
                                            : "file";
    Facts facts = {{"path", path}, {"host", host}, {"kind", kind}};
    if (!isFolder) {
        facts.emplace_back("size", size);
    }
    facts.push_back(AttributesFact(attributes));
    facts.push_back(TimeFact("created", created));
    facts.push_back(TimeFact("modified", modified));
    facts.push_back(TimeFact("accessed", accessed));
    return facts;
}

std::string FileReport::ToRow() const {
    std::string letters = isFolder ? "d" : isBrokenLink ? "l" : "-";
    for (const AttributeName& attribute : kAttributes) {
        letters += (attributes & attribute.bit) != 0 ? attribute.letter : '-';
    }
    char head[96];
    std::snprintf(head, sizeof head, "%s %12s %s ", letters.c_str(),
                  isFolder ? "" : std::to_string(size).c_str(), LocalTime(modified).c_str());
    return head + SafeText(name);
}

Facts VolumeFacts(const FileSpec& file) {
    const SharedHandle<Volume_IF> volume = file.GetVolume();
    const FileSpec root(volume->GetRootFolder(volume));
    const VolumeInfo info(root.GetPath().ToWide());
    char serial[16];
    std::snprintf(serial, sizeof serial, "%04X-%04X", info.serial >> 16, info.serial & 0xFFFFu);
    return {{"root", PlainText(root.GetPath())},
            {"host", HostPath(root)},
            {"label", PlainText(volume->GetName())},
            {"serial", serial},
            {"fileSystem", PlainText(FilePath(info.file_system))},
            {"capacity", volume->GetCapacity()},
            {"free", volume->GetFreeSpace()},
            {"maxFileSize", volume->GetMaximumFileSize()},
            {"maxNameLength", volume->GetMaximumNameLength()},
            {"network", volume->IsNetwork()},
            {"removable", volume->IsRemovable()}};
}
