#include "platform/component_model.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace brevik::platform {
namespace {

// The calling thread's apartment. The kind counts only while there are entries.
struct Apartment {
    ULONG entries;
    DWORD kind;
};

thread_local Apartment apartment;

// The room before the text of a BSTR, whose last four bytes hold the text's length in bytes. It is
// larger than that so that the text is as well aligned as a block of the allocator.
constexpr std::size_t kPrefixSize = 8;
constexpr std::size_t kLengthSize = sizeof(std::uint32_t);
constexpr std::size_t kMaximumLength = (UINT32_MAX - kPrefixSize) / sizeof(WCHAR) - 1;

}  // namespace

HRESULT CoInitializeEx(void*, DWORD kind) {
    const DWORD wanted = kind & COINIT_APARTMENTTHREADED;
    if (apartment.entries > 0 && apartment.kind != wanted) {
        return RPC_E_CHANGED_MODE;
    }
    apartment.kind = wanted;
    return apartment.entries++ == 0 ? S_OK : S_FALSE;
}

HRESULT CoInitialize(void* reserved) {
    return CoInitializeEx(reserved, COINIT_APARTMENTTHREADED);
}

void CoUninitialize() {
    if (apartment.entries > 0) {
        --apartment.entries;
    }
}

void* CoTaskMemAlloc(std::size_t size) {
    return std::malloc(std::max<std::size_t>(size, 1));
}

void CoTaskMemFree(void* block) {
    std::free(block);
}

BSTR SysAllocStringLen(const WCHAR* text, UINT length) {
    if (length > kMaximumLength) {
        return nullptr;
    }
    const std::size_t bytes = length * sizeof(WCHAR);
    auto* const block = static_cast<char*>(std::malloc(kPrefixSize + bytes + sizeof(WCHAR)));
    if (block == nullptr) {
        return nullptr;
    }
    const auto prefix = static_cast<std::uint32_t>(bytes);
    std::memcpy(block + kPrefixSize - kLengthSize, &prefix, kLengthSize);
    const auto result = reinterpret_cast<BSTR>(block + kPrefixSize);
    if (text != nullptr) {
        std::memcpy(result, text, bytes);
    }
    result[length] = u'\0';
    return result;
}

void SysFreeString(BSTR text) {
    if (text != nullptr) {
        std::free(reinterpret_cast<char*>(text) - kPrefixSize);
    }
}

UINT SysStringLen(BSTR text) {
    if (text == nullptr) {
        return 0;
    }
    std::uint32_t bytes = 0;
    std::memcpy(&bytes, reinterpret_cast<const char*>(text) - kLengthSize, kLengthSize);
    return bytes / static_cast<UINT>(sizeof(WCHAR));
}

void VariantInit(VARIANT* variant) {
    variant->vt = VT_EMPTY;
}

HRESULT VariantClear(VARIANT* variant) {
    variant->vt = VT_EMPTY;
    return S_OK;
}

}  // namespace brevik::platform

// The allocator for callers from C, under a name that no other library exports.
extern "C" PLATFORM_API void brevik_CoTaskMemFree(void* block);

void brevik_CoTaskMemFree(void* block) {
    CoTaskMemFree(block);
}
