#include "registry.h"

#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "file_argument.h"
#include "platform/posix/host_text.h"
#include "platform/registry.h"
#include "registry_data.h"
#include "registry_file.h"
#include "registry_paths.h"
#include "registry_writer.h"
#include "terminal.h"
#include "text_argument.h"

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
    return "{\"name\":" + JsonString(Utf8FromWide(value.name)) +
           ",\"type\":" + JsonString(TypeName(value.type)) + ",\"data\":" + DataJson(value) + "}";
}

void PrintValue(const RegistryValue& value, bool asJson) {
    if (asJson) {
        PrintLine(ToJson(value));
        return;
    }
    for (const std::string& line : DataLines(value)) {
        PrintLine(line);
    }
}

std::string ToJson(const RegistryKey& key) {
    std::string keys;
    for (const RegistryKey* subKey : key.subKeys) {
        keys += (keys.empty() ? "" : ",") + JsonString(Utf8FromWide(subKey->Name()));
    }
    std::string values;
    for (const auto& [folded, value] : key.values) {
        values += (values.empty() ? "" : ",") + ToJson(value);
    }
    return "{\"keys\":[" + keys + "],\"values\":[" + values + "]}";
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
        throw std::runtime_error("no key " + Quoted(Utf8FromWide(path)) +
                                 "\nTry: brevikctl registry get with the key above it");
    }
    if (options.name.empty()) {
        PrintKey(*key, options.json);
        return;
    }
    const RegistryValue* value = key->FindValue(ValueName(options.name));
    if (value == nullptr) {
        throw std::runtime_error("no value " + Quoted(options.name) + " in " +
                                 Quoted(Utf8FromWide(path)) + "\nTry: brevikctl registry get " +
                                 Quoted(options.key));
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
        throw std::runtime_error("no key " + Quoted(Utf8FromWide(path)));
    }
    if (!key->subKeys.empty() && !recursive) {
        throw std::runtime_error("the key " + Quoted(Utf8FromWide(path)) +
                                 " has keys below it\n--recursive deletes them too.");
    }
    tree->Remove(path);
}

void Delete(const Options& options) {
    const std::u16string path = RegistryArgument(options.key);
    if (options.name.empty() && path.find(u'\\') == path.npos) {
        throw std::runtime_error(Quoted(options.key) + " is a root, which cannot be deleted");
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
    const std::string path = HostPath(FileArgument(options.file));
    if (path.empty()) {
        throw std::runtime_error("no file " + Quoted(options.file));
    }
    ChangeRegistry([&](RegistryTree* tree) { MergeRegistryFile(path, tree); });
}

void Export(const Options& options) {
    const std::u16string path =
        options.key.empty() ? std::u16string() : RegistryArgument(options.key);
    RegistryTree tree;
    ReadRegistry(&tree);
    const std::string text = path.empty() ? WriteRegistryText(tree) : WriteRegistryText(tree, path);
    if (text.empty()) {
        throw std::runtime_error("no key " + Quoted(Utf8FromWide(path)));
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
        throw std::runtime_error("the file " + Quoted(target) + " cannot be written");
    }
}

void Run(void (*command)(const Options&), const Options& options) {
    try {
        command(options);
    } catch (const FileException& failure) {
        throw std::runtime_error(Explanation(failure));
    }
}

// Adds a command with options of its own.
CLI::App* AddCommand(CLI::App* parent, const char* name, const char* description,
                     void (*run)(const Options&), const std::shared_ptr<Options>& options) {
    CLI::App* command = parent->add_subcommand(name, description);
    command->callback([run, options] { Run(run, *options); });
    return command;
}

}  // namespace

void AddRegistryCommands(CLI::App& app) {
    CLI::App* registry = app.add_subcommand("registry", "Keys and values of the registry");
    registry->require_subcommand(1);
    registry->footer(
        "A key is HKLM\\SOFTWARE\\Vendor\\Product; the roots are HKLM, HKCU, HKU and HKCR, or "
        "their "
        "long names.\nKeys are taken as they stand in the file; programs look below "
        "HKLM\\SOFTWARE\\Wow6432Node first.\n");
    constexpr const char* kKey = "Key, with its root";
    constexpr const char* kName = "Name of a value, @ for the default value";

    const auto get = std::make_shared<Options>();
    CLI::App* getCommand =
        AddCommand(registry, "get", "Print a value, or the keys and values of a key", Get, get);
    getCommand->add_option("KEY", get->key, kKey)->required();
    getCommand->add_option("NAME", get->name, kName);
    getCommand->add_flag("--json", get->json, "One JSON object");

    const auto set = std::make_shared<Options>();
    CLI::App* setCommand = AddCommand(
        registry, "set", "Store a value, and make its key where it is missing", Set, set);
    setCommand->add_option("KEY", set->key, kKey)->required();
    setCommand->add_option("NAME", set->name, kName)->required();
    setCommand
        ->add_option("DATA", set->data,
                     "A text; a number, also 0x1a; bytes such as 00ff; several texts for multi. "
                     "Behind -- where it begins with a dash")
        ->required();
    setCommand->add_option("--type", set->type, "Type of the value")
        ->check(CLI::IsMember(WritableTypes()))
        ->capture_default_str();

    const auto remove = std::make_shared<Options>();
    CLI::App* deleteCommand =
        AddCommand(registry, "delete", "Delete a value, or a key with its values", Delete, remove);
    deleteCommand->add_option("KEY", remove->key, kKey)->required();
    deleteCommand->add_option("NAME", remove->name, kName);
    deleteCommand->add_flag("-r,--recursive", remove->recursive, "A key with all keys below it");

    const auto import = std::make_shared<Options>();
    CLI::App* importCommand = AddCommand(
        registry, "import", "Do all that a registry file says, or nothing", Import, import);
    importCommand->add_option("FILE", import->file, "File in the form of registry editors")
        ->required();

    const auto exported = std::make_shared<Options>();
    CLI::App* exportCommand = AddCommand(
        registry, "export", "Print a key and all below it in the form of registry editors", Export,
        exported);
    exportCommand->add_option("KEY", exported->key, "Key, with its root; all of them by default");
    exportCommand->add_option("-o,--output", exported->file, "File to write instead");
}
