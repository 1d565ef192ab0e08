// The failure of a file operation: a kind, the path that failed, and the failure beneath it.
//
// The number and the message give the kind ("access denied"); the inner exception holds the
// system's code and wording. Copies share the inner exception.
#pragma once

#include "filesystem/FilePath.h"
#include "text/SharedHandle.h"
#include "text/VelmarException.h"

class FileException : public VelmarException {
  public:
    // A failure of the kind that the text names.
    FileException(const VelmarText& text, const FilePath& path,
                  const SharedHandle<VelmarException>& inner)
        : VelmarException(text), path_(path), inner_(inner) {}

    // A failure with the number, message and note of another.
    FileException(const VelmarException& source, const FilePath& path,
                  const SharedHandle<VelmarException>& inner)
        : VelmarException(source), path_(path), inner_(inner) {}

    ~FileException() override = default;
    FileException* Clone() const override { return new FileException(*this); }
    FileException& SetNote(const std::string& note) override {
        VelmarException::SetNote(note);
        return *this;
    }

    // Raise() throws a copy of the base class alone.

    virtual FilePath GetPath() const { return path_; }

    // The failure beneath, which lives as long as any copy of this one; may be null.
    virtual const VelmarException* GetInner() const { return inner_.get(); }

  private:
    FilePath path_;
    SharedHandle<VelmarException> inner_;
};

// Throws the failure that an error code of the operating system stands for, with a
// SystemException::Win32 beneath it. A code without a kind gives the number and message of the
// inner exception, which is a SystemException::HRESULT when the code's top bit is set.
[[noreturn]] void ThrowFileError(unsigned long code, const FilePath& path);

// Throws the failure of a broken rule of the library's own at this place of its source.
[[noreturn]] void ThrowInternalFileError(const char* file, int line, const FilePath& path = {});

// The object of a handle. A null handle raises the failure of a broken rule, as above.
template <typename Object>
Object& Existing(const SharedHandle<Object>& handle, const char* file, int line) {
    if (handle == nullptr) {
        ThrowInternalFileError(file, line);
    }
    return *handle;
}
