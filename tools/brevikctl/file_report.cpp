#include "file_report.h"

#include <cstdio>
#include <vector>

#include "facts.h"
#include "file_argument.h"
#include "filesystem/FileException.h"
#include "filesystem/FileSpec_Impl.h"
#include "filesystem/VolumeInfo.h"
#include "filesystem/Volume_IF.h"
#include "terminal.h"
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
    Fact fact = {"attributes", "", ""};
    for (const AttributeName& attribute : kAttributes) {
        if ((attributes & attribute.bit) != 0) {
            fact.text += (fact.text.empty() ? "" : " ") + std::string(attribute.name);
            fact.json += (fact.json.empty() ? "" : ",") + JsonString(attribute.name);
        }
    }
    return {"attributes", fact.text.empty() ? "none" : fact.text, "[" + fact.json + "]"};
}

const char* KindOf(const FileReport& report) {
    return report.isFolder       ? "folder"
           : report.isBrokenLink ? "broken link"
           : report.isShortcut   ? "shortcut"
                                 : "file";
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

std::vector<Fact> FileFacts(const FileReport& report) {
    std::vector<Fact> facts = {TextFact("path", report.path), TextFact("host", report.host),
                               TextFact("kind", KindOf(report))};
    if (!report.isFolder) {
        facts.push_back(NumberFact("size", report.size));
    }
    facts.push_back(AttributesFact(report.attributes));
    facts.push_back(TimeFact("created", report.created));
    facts.push_back(TimeFact("modified", report.modified));
    facts.push_back(TimeFact("accessed", report.accessed));
    return facts;
}

std::vector<Fact> VolumeFacts(const FileSpec& file) {
    const SharedHandle<Volume_IF> volume = file.GetVolume();
    const FileSpec root(volume->GetRootFolder(volume));
    const VolumeInfo info(root.GetPath().ToWide());
    char serial[16];
    std::snprintf(serial, sizeof serial, "%04X-%04X", info.serial >> 16, info.serial & 0xFFFFu);
    return {TextFact("root", PlainText(root.GetPath())),
            TextFact("host", HostPath(root)),
            TextFact("label", PlainText(volume->GetName())),
            TextFact("serial", serial),
            TextFact("fileSystem", PlainText(FilePath(info.file_system))),
            NumberFact("capacity", volume->GetCapacity()),
            NumberFact("free", volume->GetFreeSpace()),
            NumberFact("maxFileSize", volume->GetMaximumFileSize()),
            NumberFact("maxNameLength", volume->GetMaximumNameLength()),
            YesNoFact("network", volume->IsNetwork()),
            YesNoFact("removable", volume->IsRemovable())};
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

std::string FileReport::ToText() const {
    return ToLines(FileFacts(*this));
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

std::string FileReport::ToJson() const {
    return ToObject(FileFacts(*this));
}

std::string VolumeText(const FileSpec& file) {
    return ToLines(VolumeFacts(file));
}

std::string VolumeJson(const FileSpec& file) {
    return ToObject(VolumeFacts(file));
}
