// What a file object can do. See FileSpec for the value class that holds one.
//
// A file object names one path on one volume, which may or may not exist on disk. It never changes,
// so any thread may use it. A failure of the platform raises a FileException with the object's path
// (ThrowFileError). Paths and names are UTF-8, sizes are bytes, times are local time.
#pragma once

#include <cstdint>

#include "filesystem/FilePath.h"
#include "platform/types.h"
#include "text/SharedHandle.h"

class DateTime;
class FileChannel;
class FileSpec;
class Volume_IF;

// Bits of the portable attribute word.
namespace FileAttributes {

inline constexpr std::uint32_t kArchive = 1;
inline constexpr std::uint32_t kHidden = 2;
inline constexpr std::uint32_t kReadOnly = 4;
inline constexpr std::uint32_t kSystem = 8;

}  // namespace FileAttributes

class FileSpec_IF {
  public:
    virtual ~FileSpec_IF() = default;

    // Makes an empty file; one that exists is a failure and stays as it is.
    virtual void Create() = 0;

    // Makes one folder, in a folder that exists.
    virtual void CreateFolder() = 0;

    // Deletes a file or an empty folder, also a read-only one. What does not exist is no failure.
    virtual void Delete() = 0;

    virtual DateTime GetAccessTime() const = 0;

    // Bits of FileAttributes.
    virtual std::uint32_t GetAttributes() const = 0;
    virtual FilePath GetBaseName() const = 0;

    // The form in which the paths of equal objects on one volume are equal texts.
    virtual FilePath GetCanonicalPath() const = 0;
    virtual DateTime GetCreationTime() const = 0;

    // FilePath::GetExtension of the whole path.
    virtual FilePath GetExtension() const = 0;
    virtual std::uint64_t GetFileSize() const = 0;
    virtual DateTime GetModificationTime() const = 0;
    virtual FilePath GetName() const = 0;

    // The form that the platform's operations take.
    virtual WideString GetNativePath() const = 0;

    // The absolute path, with "\" between components.
    virtual FilePath GetPath() const = 0;
    virtual SharedHandle<Volume_IF> GetVolume() const = 0;

    // Whether the path is that of a shortcut; the disk is not asked.
    virtual bool IsAlias() const = 0;
    virtual bool IsEqual(const FileSpec& other) const = 0;

    // These two raise for what does not exist.
    virtual bool IsFile() const = 0;
    virtual bool IsFolder() const = 0;

    // Never raises.
    virtual bool IsPresent() const = 0;

    // Whether the path is the root of its volume.
    virtual bool IsRoot() const = 0;

    // The object of a path below this one, on the same volume.
    virtual FileSpec MakeChild(const FilePath& name) const = 0;

    // Opens the file with bits of FileChannelMode. The channel keeps this object alive.
    virtual FileChannel MakeFileChannel(std::uint32_t mode) = 0;

    // The folder above; null for a root.
    virtual FileSpec MakeParent() const = 0;

    // Moves what is there to the target's path, which must not exist. This object keeps its path.
    virtual void Rename(const FileSpec& target) = 0;
    virtual FileSpec RootFolder() const = 0;
    virtual void SetAccessTime(const DateTime& time) = 0;

    // Sets the four portable attributes; others on disk stay as they are.
    virtual void SetAttributes(std::uint32_t attributes) = 0;
    virtual void SetCreationTime(const DateTime& time) = 0;

    // Cuts the file, or grows it.
    virtual void SetFileSize(std::uint64_t size) = 0;
    virtual void SetModificationTime(const DateTime& time) = 0;
};

// The shortcut side of a file object.
class AliasSpec_IF {
  public:
    virtual ~AliasSpec_IF() = default;

    // What the shortcut leads to, null for one without a target. Raises a FileException with the
    // shortcut's path when it cannot be read, or its target cannot be found.
    virtual SharedHandle<FileSpec_IF> ResolveAlias() = 0;
};
