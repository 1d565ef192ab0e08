// A host in C++: blocks that the library hands out have scoped owners, and answers are values.
// With an argument it also asks for the name of the product with that GUID: host GUID.

#include <brevikconfig.h>

#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

struct BlockDeleter {
    void operator()(void* block) const { CoTaskMemFree(block); }
};

// Owns a block from the moment that the library has handed it out.
template <typename Unit>
using Block = std::unique_ptr<Unit, BlockDeleter>;

using WideText = std::basic_string<bvkc_wchar>;

std::optional<std::string> ItemOf(const std::string& guid, const std::string& item) {
    void* value = nullptr;
    std::uint32_t size = 0;
    if (!bvkc_CertificateItemValue(guid.c_str(), item.c_str(), &value, &size)) {
        return std::nullopt;
    }
    const Block<void> owner(value);
    return std::string(static_cast<const char*>(value), size - 1);
}

std::vector<std::string> LocalGuids() {
    char* list = nullptr;
    bvkc_GetLocalGUIDs(&list);
    const Block<char> owner(list);
    std::vector<std::string> guids;
    for (const char* guid = list; guid != nullptr && *guid != '\0'; guid += std::strlen(guid) + 1) {
        guids.emplace_back(guid);
    }
    return guids;
}

std::optional<bvkc_langid> Language(const std::vector<bvkc_langid>& offered) {
    bvkc_langid selected = 0;
    const auto count = static_cast<std::uint32_t>(offered.size());
    if (bvkc_GetUserLanguage_Ids(offered.data(), count, &selected) != 0) {
        return std::nullopt;
    }
    return selected;
}

// The library answers "-1" where there is no value.
std::optional<WideText> CookieValue(const WideText& key) {
    bvkc_wchar* value = nullptr;
    const std::int32_t result = bvkc_VCM_ReadOndrelCookieValue(key.c_str(), &value);
    const Block<bvkc_wchar> owner(value);
    const bvkc_wchar missing[] = {'-', '1', 0};
    if (result != 0 || value == nullptr || WideText(value) == missing) {
        return std::nullopt;
    }
    return WideText(value);
}

}  // namespace

int main(int argc, char** argv) {
    if (const auto language = Language({1031, 1033, 1036})) {
        std::cout << "of 1031, 1033 and 1036 I run in " << *language << '\n';
    }
    std::cout << "products beside this program: " << LocalGuids().size() << '\n';
    if (argc == 2) {
        std::cout << "its name is " << ItemOf(argv[1], "QDR_ProductName").value_or("(unknown)")
                  << '\n';
    }

    const WideText key = {'v', 'o', 'l', 'u', 'm', 'e'};
    const WideText loud = {'1', '1'};
    if (bvkc_VCM_WriteOndrelCookieValue(key.c_str(), loud.c_str()) != 0) {
        std::cerr << "the value could not be stored\n";
        return 1;
    }
    const bool isStored = CookieValue(key) == loud;
    std::cout << (isStored ? "the value of volume is 11\n" : "the value of volume is lost\n");
    return isStored ? 0 : 1;
}
