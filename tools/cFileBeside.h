#pragma once

#include <string>

namespace tool {

/// A new file beside the one that it is to replace in one step (rename(2)): whoever opens the
/// path finds the older file or the whole new one. An older file's permissions are taken over, a
/// symbolic link stays. Gone with this unless it has taken its place or is kept.
class cFileBeside {
 public:
  /// Makes the file. Throws `cFailure` when what is at `path` is no regular file or is protected
  /// against writing, or its folder takes none; everything is as it was then.
  explicit cFileBeside(const std::string& path);
  cFileBeside(const cFileBeside&) = delete;
  cFileBeside& operator=(const cFileBeside&) = delete;
  ~cFileBeside();

  /// The descriptor to write to. Its owner is this.
  int getDescriptor() const { return fd; }

  /// Where it is until it takes its place.
  const std::string& getName() const { return name; }

  /// Puts what was written on the disk (fsync(2)) and the file in its place. Throws `cFailure`
  /// when that fails.
  void takePlace();

  /// Leaves the file where it is when this ends.
  void keep() { isKept = true; }

 private:
  const std::string asked;
  const std::string target;  // where a symbolic link leads
  const std::string name;
  int fd = -1;
  bool isKept = false;
};

/// Throws the `cFailure` of a file that cannot be written to, for an error as errno has it.
[[noreturn]] void failToWrite(const std::string& path, int error);

}  // namespace tool
