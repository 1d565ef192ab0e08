#include "brevikctl/files/file_report.h"

#include <cstdio>
#include <vector>

#include "brevikctl/files/file_argument.h"
#include "brevikctl/output/terminal.h"
#include "filesystem/FileException.h"
#include "filesystem/FileSpec.h"
#include "filesystem/VolumeInfo.h"
#include "filesystem/Volume_IF.h"
#include "filesystem/dates/DateTime.h"
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

// What is asked of the disk about one file object, all at one time.
struct FileReport {
    explicit FileReport(const FileSpec& file)
        : isFolder(file.IsFolder()),
          isShortcut(!isFolder && file.IsAlias()),
          attributes(file.GetAttributes()) {
        if (!isFolder) {
            ReadSize(file);
        }
        const FileSpec_IF& details = *FileSpec_Impl(file).Get();
        created = details.GetCreationTime();
        accessed = details.GetAccessTime();
        modified = details.GetModificationTime();
    }

    // What has a name and attributes and still cannot be found is a link that leads nowhere.
    void ReadSize(const FileSpec& file) {
        try {
            size = file.GetFileSize();
        } catch (const FileException& failure) {
            isBrokenLink = failure.GetNumber() == Texts::fileNotFound.GetId() ||
                           failure.GetNumber() == Texts::filePathNotFound.GetId();
            if (!isBrokenLink) {
                throw;
            }
        }
    }

    bool isFolder;
    bool isShortcut;
    bool isBrokenLink = false;
    std::uint64_t size = 0;
    std::uint32_t attributes;
    DateTime created;
    DateTime accessed;
    DateTime modified;
};

}  // namespace

Facts FileFacts(const FileSpec& file) {
    const FileReport report(file);
    const char* const kind = report.isFolder       ? "folder"
                             : report.isBrokenLink ? "broken link"
                             : report.isShortcut   ? "shortcut"
                                                   : "file";
    Facts facts = {{"path", PlainText(file.GetPath())}, {"host", HostPath(file)}, {"kind", kind}};
    if (!report.isFolder) {
        facts.emplace_back("size", report.size);
    }
    facts.push_back(AttributesFact(report.attributes));
    facts.push_back(TimeFact("created", report.created));
    facts.push_back(TimeFact("modified", report.modified));
    facts.push_back(TimeFact("accessed", report.accessed));
    return facts;
}

std::string FileRow(const FileSpec& file) {
    const FileReport report(file);
    std::string letters = report.isFolder ? "d" : report.isBrokenLink ? "l" : "-";
    for (const AttributeName& attribute : kAttributes) {
        letters += (report.attributes & attribute.bit) != 0 ? attribute.letter : '-';
    }
    char head[96];
    std::snprintf(head, sizeof head, "%s %12s %s ", letters.c_str(),
                  report.isFolder ? "" : std::to_string(report.size).c_str(),
                  LocalTime(report.modified).c_str());
    return head + SafeText(PlainText(file.GetName()));
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
