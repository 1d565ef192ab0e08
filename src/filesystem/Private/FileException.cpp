#include "filesystem/FileException.h"

#include <algorithm>
#include <iterator>
#include <memory>

#include "platform/errors.h"
#include "text/SystemException.h"
#include "text/Texts.h"

namespace {

struct Kind {
    unsigned long code;
    const VelmarText* text;
};

constexpr Kind kKinds[] = {
    {2, &Texts::fileNotFound},      {3, &Texts::filePathNotFound}, {5, &Texts::accessDenied},
    {15, &Texts::filePathNotFound}, {19, &Texts::volumeLocked},    {21, &Texts::mediaNotFound},
    {32, &Texts::accessDenied},     {38, &Texts::endOfFile},       {39, &Texts::volumeFull},
    {53, &Texts::filePathNotFound}, {80, &Texts::fileExists},      {112, &Texts::volumeFull},
    {123, &Texts::invalidFilePath}, {145, &Texts::folderNotEmpty}, {161, &Texts::invalidFilePath},
    {183, &Texts::fileExists},      {1112, &Texts::mediaNotFound}, {1231, &Texts::mediaNotFound},
    {1785, &Texts::invalidMedia},   {4300, &Texts::invalidMedia},  {4303, &Texts::invalidMedia},
    {4308, &Texts::mediaNotFound},  {4315, &Texts::invalidMedia},  {4318, &Texts::mediaNotFound},
};

constexpr unsigned long kResultBit = 0x80000000;

}  // namespace

void ThrowFileError(unsigned long code, const FilePath& path) {
    const Kind* kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                    [code](const Kind& row) { return row.code == code; });
    if (kind != std::end(kKinds)) {
        throw FileException(*kind->text, path, std::make_shared<SystemException::Win32>(code));
    }
    SharedHandle<VelmarException> inner;
    if ((code & kResultBit) != 0) {
        inner = std::make_shared<SystemException::HRESULT>(static_cast<std::int32_t>(code));
    } else {
        inner = std::make_shared<SystemException::Win32>(code);
    }
    throw FileException(*inner, path, inner);
}

void ThrowInternalFileError(const char* file, int line, const FilePath& path) {
    const auto inner = std::make_shared<VelmarException>(file, line);
    throw FileException(*inner, path, inner);
}
