#include "brevikctl/certificates/reader_component.h"

#include <cstdio>
#include <filesystem>

#include "brevikctl/output/terminal.h"
#include "brevikctl/output/trouble.h"
#include "brevikctl/registry/registry_data.h"
#include "brevikctl/registry/registry_file.h"
#include "brevikctl/registry/registry_paths.h"
#include "certificate_reader/reader.h"
#include "modules/CLibraryUtilsImpl.h"
#include "platform/posix/text/host_text.h"

namespace {

namespace fs = std::filesystem;

// Where the component lies beside this tool: in a build tree, and installed.
constexpr const char* kFolders[] = {"../../components/certificate_reader",
                                    "../" BREVIK_LIBRARY_FOLDER "/brevikconfig"};

const std::u16string kKey =
    u"Classes\\CLSID\\" + WideFromUtf8(CertificateReader::kClassText) + u"\\InprocServer32";

void Release(void* reader) {
    static_cast<CertificateReader::IReader*>(reader)->Release();
}

}  // namespace

std::string ReaderBesideTool() {
    const fs::path tools = fs::canonical("/proc/self/exe").parent_path();
    for (const char* folder : kFolders) {
        const fs::path path = (tools / folder / BREVIK_READER_FILE).lexically_normal();
        if (fs::is_regular_file(path)) {
            return path.string();
        }
    }
    Fail("no certificate reader component lies beside brevikctl",
         "--reader PATH says where it is; its file is named " BREVIK_READER_FILE ".");
}

void RequireReader(const std::string& path) {
    void* object = nullptr;
    CLibraryUtils::CLibraryUtilsImpl library;
    const HRESULT result =
        library.CreateInstance(CertificateReader::kClass, nullptr, WideFromUtf8(path).c_str(),
                               CertificateReader::kInterface, &object);
    if (FAILED(result) || object == nullptr) {
        Fail(Quoted(path) + " is no certificate reader component",
             "It is missing, no library, or one of another kind; its file is "
             "named " BREVIK_READER_FILE ".");
    }
    Release(object);
}

void RegisterReader(const std::string& path) {
    ChangeRegistry([&](RegistryTree* tree) {
        tree->Make(PlaceForPrograms(*tree, kKey))->SetValue(TextValue(u"", path));
    });
}

std::string RegisteredReader() {
    RegistryTree tree;
    RegistryFault fault;
    if (ReadRegistry(&tree, &fault) != NO_ERROR) {
        return {};
    }
    const RegistryKey* key = tree.Find(PlaceForPrograms(tree, kKey));
    const RegistryValue* path = key != nullptr ? key->FindValue(u"") : nullptr;
    return path != nullptr ? TextOf(*path) : std::string();
}

HRESULT TryReader() {
    void* object = nullptr;
    const HRESULT result =
        CoCreateInstance(CertificateReader::kClass, nullptr, CLSCTX_INPROC_SERVER,
                         CertificateReader::kInterface, &object);
    if (SUCCEEDED(result)) {
        Release(object);
    }
    return result;
}

std::string CodeText(HRESULT result) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(result));
    return text;
}
