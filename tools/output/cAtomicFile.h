#pragma once

#include <sys/stat.h>

#include <string>

namespace tool {

/// A new file beside the one that it is to replace in one step (rename(2)): whoever opens the
/// path finds the older file or the whole new one. An older file's owner, group and permissions are
/// taken over as far as that is allowed, a symbolic link stays. Gone with this unless it has taken
/// its place or is kept.
class cAtomicFile {
 public:
  /// Makes the file. Throws `cFailure` when what is at `path` is no regular file or is protected
  /// against writing, or its folder takes none; everything is as it was then.
  explicit cAtomicFile(const std::string& path);
  cAtomicFile(const cAtomicFile&) = delete;
  cAtomicFile& operator=(const cAtomicFile&) = delete;
  ~cAtomicFile();

  /// The descriptor to write to. Its owner is this.
  int getDescriptor() const { return fd; }

  /// Where it is until it takes its place.
  const std::string& getName() const { return name; }

  /// Puts what was written on the disk (fsync(2)) and the file in its place. Throws `cFailure`
  /// when that fails.
  void commit();

  /// Removes the file; nothing may be written afterwards.
  void discard();

  /// Leaves the file where it is when this ends.
  void keepTemporary() { isKept = true; }

 private:
  void copyAttributes(const struct stat& older) const;

  const std::string asked;
  const std::string target;  // where a symbolic link leads
  const std::string name;
  int fd = -1;
  bool isKept = false;
};

/// Throws `cFailure` when `writeAtomically` could not do its work at `path`: what is there is no
/// regular file, or its folder takes none. Leaves everything as it was.
void checkWritable(const std::string& path);

/// Makes `text` the content of `path` in one step (rename(2)): a reader finds the older file or
/// the new one, never a part. An older file keeps its permissions, a symbolic link its place.
/// Throws `cFailure` when it cannot be written; the older file is as it was then.
void writeAtomically(const std::string& path, const std::string& text);

/// Throws the `cFailure` of a file that cannot be written to, for an error as errno has it.
[[noreturn]] void throwWriteError(const std::string& path, int error);

}  // namespace tool
