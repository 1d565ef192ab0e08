#include "platform/messages.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

#include "platform/posix/base/last_error.h"
#include "platform/posix/text/host_text.h"

namespace brevik::platform {
namespace {

// Sorted by code. A text is one line without its end, and holds no percent sign: that would begin
// an insert.
constexpr MessageTableRow kSystemTable[] = {
    {ERROR_SUCCESS, "No error occurred."},
    {ERROR_FILE_NOT_FOUND, "There is no file of this name."},
    {ERROR_PATH_NOT_FOUND, "A folder on the way to this name is missing."},
    {ERROR_TOO_MANY_OPEN_FILES, "No further file can be opened."},
    {ERROR_ACCESS_DENIED, "The permission for this is missing."},
    {ERROR_INVALID_HANDLE, "The handle does not stand for anything open."},
    {ERROR_NOT_ENOUGH_MEMORY, "There is too little memory to do this."},
    {ERROR_INVALID_DATA, "The data have a form that cannot be read."},
    {ERROR_OUTOFMEMORY, "There is too little memory to finish this."},
    {ERROR_INVALID_DRIVE, "There is no drive of this letter."},
    {ERROR_NOT_SAME_DEVICE, "This cannot be moved from one disk to another."},
    {ERROR_NO_MORE_FILES, "All files have been listed."},
    {ERROR_WRITE_PROTECT, "The medium is protected against writing."},
    {ERROR_NOT_READY, "The drive is not ready."},
    {ERROR_GEN_FAILURE, "The device failed for a reason of its own."},
    {ERROR_SHARING_VIOLATION, "The file is in use and not shared for this."},
    {ERROR_HANDLE_EOF, "The end of the file has been reached."},
    {ERROR_HANDLE_DISK_FULL, "The disk has no room left for the file."},
    {ERROR_NOT_SUPPORTED, "This request is not supported."},
    {ERROR_BAD_NETPATH, "No server of this name answers."},
    {ERROR_FILE_EXISTS, "A file of this name is there already."},
    {ERROR_INVALID_PARAMETER, "An argument has a value that is not allowed."},
    {ERROR_DISK_FULL, "The disk has no room left."},
    {ERROR_INSUFFICIENT_BUFFER, "The buffer given is too small for the answer."},
    {ERROR_INVALID_NAME, "A name in this path is not a valid one."},
    {ERROR_MOD_NOT_FOUND, "A library of this name cannot be found."},
    {ERROR_PROC_NOT_FOUND, "The library has no operation of this name."},
    {ERROR_NEGATIVE_SEEK, "A position before the start of the file was asked for."},
    {ERROR_DIR_NOT_EMPTY, "The folder still holds something."},
    {ERROR_BAD_PATHNAME, "The path has a form that is not allowed."},
    {ERROR_ALREADY_EXISTS, "Something of this name is there already."},
    {ERROR_BAD_EXE_FORMAT, "The file is not a program or library for this system."},
    {ERROR_MORE_DATA, "There is more data than was asked for."},
    {ERROR_NO_MORE_ITEMS, "There are no further entries."},
    {ERROR_DIRECTORY, "The name is not that of a folder."},
    {ERROR_NO_MEDIA_IN_DRIVE, "The drive is empty."},
    {ERROR_NETWORK_UNREACHABLE, "There is no way to the network place."},
    {ERROR_REQUEST_ABORTED, "The request was called off."},
    {ERROR_INVALID_WINDOW_HANDLE, "The window handle does not stand for a window."},
    {ERROR_NO_SYSTEM_RESOURCES, "The system lacks the resources to do this."},
    {ERROR_TIMEOUT, "The time allowed for this has run out."},
    {ERROR_UNRECOGNIZED_MEDIA, "The medium has no format that is known here."},
    {4300, "The medium is not a valid one."},
    {4303, "The medium does not fit the drive."},
    {4308, "The medium cannot be had now."},
    {4315, "The medium is of a kind that does not go with this."},
    {4318, "No medium is at hand for this."},
    {ERROR_INTERNET_UNRECOGNIZED_SCHEME, "The scheme of the web address is not known."},
    {static_cast<DWORD>(E_NOTIMPL), "The object does not implement this operation."},
    {static_cast<DWORD>(E_NOINTERFACE), "The object does not have this interface."},
    {static_cast<DWORD>(E_POINTER), "A pointer is null or leads nowhere."},
    {static_cast<DWORD>(E_FAIL), "The operation failed for a reason that it does not name."},
    {static_cast<DWORD>(E_UNEXPECTED), "The object failed in a way that was not foreseen."},
    {static_cast<DWORD>(RPC_E_CHANGED_MODE),
     "The thread already is in an apartment of another kind."},
    {static_cast<DWORD>(CLASS_E_NOAGGREGATION), "The class cannot be made part of another object."},
    {static_cast<DWORD>(CLASS_E_CLASSNOTAVAILABLE), "The library does not provide this class."},
    {static_cast<DWORD>(REGDB_E_CLASSNOTREG), "The class has not been registered."},
    {static_cast<DWORD>(CO_E_NOTINITIALIZED), "The thread has not entered an apartment."},
};

constexpr bool IsBefore(const MessageTableRow& a, const MessageTableRow& b) {
    return a.code < b.code;
}

static_assert(std::is_sorted(std::begin(kSystemTable), std::end(kSystemTable), IsBefore));

// A component-model failure that only wraps an error number has the text of that number.
constexpr DWORD Unwrapped(DWORD code) {
    constexpr DWORD kWrapped = 0x80070000;
    return (code & 0xFFFF0000) == kWrapped ? code & 0xFFFF : code;
}

// Both return null where there is no text.

const char* SystemText(DWORD code) {
    const MessageTableRow wanted = {Unwrapped(code), nullptr};
    const auto* row =
        std::lower_bound(std::begin(kSystemTable), std::end(kSystemTable), wanted, IsBefore);
    return row != std::end(kSystemTable) && row->code == wanted.code ? row->text : nullptr;
}

const char* ModuleText(const void* source, DWORD code) {
    const auto module = static_cast<HMODULE>(const_cast<void*>(source));
    // By way of the one type that the compiler takes for any function.
    const auto function =
        reinterpret_cast<void (*)()>(GetProcAddress(module, "BrevikMessageTable"));
    const auto table = reinterpret_cast<MessageTableFunction>(function);
    if (table == nullptr) {
        return nullptr;
    }
    const MessageTableRow* row = table();
    while (row->text != nullptr && row->code != code) {
        ++row;
    }
    return row->text;
}

}  // namespace

DWORD FormatMessageW(DWORD flags, const void* source, DWORD code, DWORD, WCHAR* buffer, DWORD,
                     void*) {
    const char* text =
        (flags & FORMAT_MESSAGE_FROM_SYSTEM) != 0 ? SystemText(code) : ModuleText(source, code);
    if (text == nullptr) {
        return Fail<DWORD>(ERROR_MR_MID_NOT_FOUND);
    }
    const WideString line = WideFromUtf8(text) + u"\r\n";
    const auto block = static_cast<WCHAR*>(std::calloc(line.size() + 1, sizeof(WCHAR)));
    if (block == nullptr) {
        return Fail<DWORD>(ERROR_NOT_ENOUGH_MEMORY);
    }
    line.copy(block, line.size());
    std::memcpy(buffer, &block, sizeof block);
    return static_cast<DWORD>(line.size());
}

HLOCAL LocalFree(HLOCAL block) {
    std::free(block);
    return nullptr;
}

int strerror_s(char* buffer, std::size_t size, int code) {
    // Always in English, whatever the host's locale, like all other texts here.
    const char* text = strerrordesc_np(code);
    const std::string_view source = text != nullptr ? text : "Unknown error";
    buffer[source.copy(buffer, size - 1)] = '\0';
    return 0;
}

}  // namespace brevik::platform
