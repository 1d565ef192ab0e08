// Shortcut files: no text that is read holds a NUL, and a file that is cut anywhere but in what
// follows its texts is refused or reads the same.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/posix/files/shortcut_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto whole = ParseShortcut(bytes);
    if (!whole) {
        return 0;
    }
    for (const std::u16string* text :
         {&whole->localPath, &whole->sharePath, &whole->relativePath, &whole->workingFolder}) {
        if (text->find(u'\0') != text->npos) {
            std::abort();
        }
    }
    const auto cut = ParseShortcut(bytes.substr(0, size - 1));
    if (cut &&
        (cut->localPath != whole->localPath || cut->sharePath != whole->sharePath ||
         cut->relativePath != whole->relativePath || cut->workingFolder != whole->workingFolder)) {
        std::abort();
    }
    return 0;
}
