#include "platform/registry.h"

#include <fstream>
#include <string>
#include <vector>

#include "brevikctl/commands/command.h"
#include "brevikctl/commands/commands.h"
#include "brevikctl/files/file_argument.h"
#include "brevikctl/output/facts.h"
#include "brevikctl/output/terminal.h"
#include "brevikctl/output/trouble.h"
#include "brevikctl/registry/registry_data.h"
#include "brevikctl/registry/registry_file.h"
#include "brevikctl/registry/registry_paths.h"
#include "brevikctl/registry/registry_writer.h"
#include "platform/posix/text/host_text.h"

namespace {

struct Options {
    std::string key;
    std::string name;
    std::vector<std::string> data;
    std::string type = "sz";
    std::string file;
    bool recursive = false;
    bool json = false;
};

// The name under which a key's default value is asked for, and shown.
constexpr const char* kDefaultValue = "@";

std::u16string ValueName(const std::string& text) {
    return text == kDefaultValue ? std::u16string() : WideArgument(text);
}

std::string ShownName(const RegistryValue& value) {
    return value.name.empty() ? kDefaultValue : Utf8FromWide(value.name);
}

std::string ToJson(const RegistryValue& value) {
    return ToObject({{"name", Utf8FromWide(value.name)},
                     {"type", TypeName(value.type)},
                     Fact::OfJson("data", DataJson(value))});
}

void PrintValue(const RegistryValue& value, bool asJson) {
    for (const std::string& line : asJson ? std::vector{ToJson(value)} : DataLines(value)) {
        PrintLine(line);
    }
}

std::string ToJson(const RegistryKey& key) {
    return ToObject(
        {Fact::OfJson("keys", ToArray(key.subKeys,
                                      [](const RegistryKey* subKey) {
                                          return JsonString(Utf8FromWide(subKey->Name()));
                                      })),
         Fact::OfJson("values", ToArray(key.values,
                                        [](const auto& named) { return ToJson(named.second); }))});
}

[[noreturn]] void FailForNoKey(const std::u16string& path, const std::string& hint = {}) {
    Fail("no key " + Quoted(Utf8FromWide(path)), hint);
}

// The sub keys, and then the values with their types and data.
void PrintKey(const RegistryKey& key, bool asJson) {
    if (asJson) {
        PrintLine(ToJson(key));
        return;
    }
    for (const RegistryKey* subKey : key.subKeys) {
        PrintLine(Utf8FromWide(subKey->Name()) + "\\");
    }
    for (const auto& [folded, value] : key.values) {
        std::string line = ShownName(value) + "  " + TypeName(value.type) + " ";
        for (const std::string& data : DataLines(value)) {
            line += " " + (value.type == REG_MULTI_SZ ? "'" + data + "'" : data);
        }
        PrintLine(line);
    }
}

void Get(const Options& options) {
    const std::u16string path = RegistryArgument(options.key);
    RegistryTree tree;
    ReadRegistry(&tree);
    const RegistryKey* key = tree.Find(path);
    if (key == nullptr) {
        FailForNoKey(path, "Try: brevikctl registry get with the key above it");
    }
    if (options.name.empty()) {
        PrintKey(*key, options.json);
        return;
    }
    const RegistryValue* value = key->FindValue(ValueName(options.name));
    if (value == nullptr) {
        Fail("no value " + Quoted(options.name) + " in " + Quoted(Utf8FromWide(path)),
             "Try: brevikctl registry get " + Quoted(options.key));
    }
    PrintValue(*value, options.json);
}

void Set(const Options& options) {
    const std::u16string path = RegistryArgument(options.key);
    const RegistryValue value = MakeValue(ValueName(options.name), options.type, options.data);
    RequireRegistry(IsRegistryValueName(value.name) ? NO_ERROR : ERROR_INVALID_PARAMETER, {});
    ChangeRegistry([&](RegistryTree* tree) { tree->Make(path)->SetValue(value); });
}

void DeleteValue(RegistryTree* tree, const std::u16string& path, const std::u16string& name) {
    RegistryKey* key = tree->Find(path);
    const bool isDeleted = key != nullptr && key->RemoveValue(name);
    RequireRegistry(isDeleted ? NO_ERROR : ERROR_FILE_NOT_FOUND, {});
}

void DeleteKey(RegistryTree* tree, const std::u16string& path, bool recursive) {
    const RegistryKey* key = tree->Find(path);
    if (key == nullptr) {
        FailForNoKey(path);
    }
    if (!key->subKeys.empty() && !recursive) {
        Fail("the key " + Quoted(Utf8FromWide(path)) + " has keys below it",
             "--recursive deletes them too.");
    }
    tree->Remove(path);
}

void Delete(const Options& options) {
    const std::u16string path = RegistryArgument(options.key);
    if (options.name.empty() && path.find(u'\\') == path.npos) {
        Fail(Quoted(options.key) + " is a root, which cannot be deleted");
    }
    ChangeRegistry([&](RegistryTree* tree) {
        if (options.name.empty()) {
            DeleteKey(tree, path, options.recursive);
        } else {
            DeleteValue(tree, path, ValueName(options.name));
        }
    });
}

void Import(const Options& options) {
    const std::string path = HostPath(ExistingFile(options.file));
    ChangeRegistry([&](RegistryTree* tree) { MergeRegistryFile(path, tree); });
}

void Export(const Options& options) {
    const std::u16string path =
        options.key.empty() ? std::u16string() : RegistryArgument(options.key);
    RegistryTree tree;
    ReadRegistry(&tree);
    const std::string text = path.empty() ? WriteRegistryText(tree) : WriteRegistryText(tree, path);
    if (text.empty()) {
        FailForNoKey(path);
    }
    if (options.file.empty()) {
        std::fputs(text.c_str(), stdout);
        return;
    }
    const std::string target = HostPlaceOf(FileArgument(options.file));
    std::ofstream file(target, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (!file) {
        Fail("the file " + Quoted(target) + " cannot be written");
    }
}

}  // namespace

void AddRegistryCommands(CLI::App& app) {
    CLI::App& registry = AddGroup(app, "registry", "Keys and values of the registry");
    registry.footer(
        "A key is HKLM\\SOFTWARE\\Vendor\\Product; the roots are HKLM, HKCU, HKU and HKCR, or "
        "their long names.\nKeys are taken as they stand in the file; programs look below "
        "HKLM\\SOFTWARE\\Wow6432Node first.\n");
    constexpr const char* kKey = "Key, with its root";
    constexpr const char* kName = "Name of a value, @ for the default value";

    Command(registry, "get", "Print a value, or the keys and values of a key", Get)
        .Required("KEY", &Options::key, kKey)
        .Option("NAME", &Options::name, kName)
        .Json();
    Command set(registry, "set", "Store a value, and make its key where it is missing", Set);
    set.Required("KEY", &Options::key, kKey)
        .Required("NAME", &Options::name, kName)
        .Required("DATA", &Options::data,
                  "A text; a number, also 0x1a; bytes such as 00ff; several texts for multi. "
                  "After -- where it begins with a dash");
    set.Add("--type", &Options::type, "Type of the value")
        ->check(CLI::IsMember(WritableTypes()))
        ->capture_default_str();
    Command(registry, "delete", "Delete a value, or a key with its values", Delete)
        .Required("KEY", &Options::key, kKey)
        .Option("NAME", &Options::name, kName)
        .Flag("-r,--recursive", &Options::recursive, "A key with all keys below it");
    Command(registry, "import", "Do all that a registry file says, or nothing", Import)
        .Required("FILE", &Options::file, "File in the form of registry editors");
    Command(registry, "export", "Print a key and all below it in the form of registry editors",
            Export)
        .Option("KEY", &Options::key, "Key, with its root; all of them by default")
        .Option("-o,--output", &Options::file, "File to write instead");
}
