#include "tools/output/cAtomicFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "tools/base/cFailure.h"
#include "tools/base/printable.h"

namespace tool {

namespace {

namespace fs = std::filesystem;

constexpr int MAX_LINKS = 40;  // as the kernel follows

/// Where symbolic links lead, also if nothing is there yet.
std::string resolveLinks(fs::path path) {
  std::error_code error;
  for (int i = 0; i < MAX_LINKS && fs::is_symlink(path, error); ++i) {
    path = path.parent_path() / fs::read_symlink(path, error);
  }
  return path;
}

}  // namespace

void throwWriteError(const std::string& path, int error) {
  throw cFailure(eExit::BAD_INPUT,
                 fmt::format("cannot write to {}: {}. Give a file and a folder that you may write "
                             "to and that have room.",
                             oneLine(path), std::strerror(error)));
}

cAtomicFile::cAtomicFile(const std::string& path)
    : asked(path), target(resolveLinks(path)), name(fmt::format("{}.part-{}", target, getpid())) {
  struct stat older {};
  const bool isThere = stat(target.c_str(), &older) == 0;
  if (!isThere && errno != ENOENT) throwWriteError(path, errno);
  if (isThere && !S_ISREG(older.st_mode)) {
    throwWriteError(path, S_ISDIR(older.st_mode) ? EISDIR : EINVAL);
  }
  // A new file could take the place of one that is protected against just that.
  if (isThere && faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) {
    throwWriteError(path, errno);
  }
  unlink(name.c_str());  // of a process of the same id that crashed
  fd = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, isThere ? 0600 : 0666);
  if (fd < 0) throwWriteError(path, errno);
  if (isThere) copyAttributes(older);
}

cAtomicFile::~cAtomicFile() {
  close(fd);
  if (!isKept) discard();
}

void cAtomicFile::discard() { unlink(name.c_str()); }

/// Only root may give a file away, and others only to a group of theirs.
void cAtomicFile::copyAttributes(const struct stat& older) const {
  constexpr auto SAME_OWNER = static_cast<uid_t>(-1);
  if (fchown(fd, older.st_uid, older.st_gid) != 0) {
    [[maybe_unused]] const int group = fchown(fd, SAME_OWNER, older.st_gid);
  }
  fchmod(fd, older.st_mode & 0777);
}

void cAtomicFile::commit() {
  if (fsync(fd) != 0)
    throwWriteError(asked, errno);  // some file systems tell only now that they are full
  if (rename(name.c_str(), target.c_str()) != 0) throwWriteError(asked, errno);
  isKept = true;
}

void checkWritable(const std::string& path) { const cAtomicFile trial(path); }

void writeAtomically(const std::string& path, const std::string& text) {
  cAtomicFile file(path);
  for (std::string_view left = text; !left.empty();) {
    const ssize_t written = write(file.getDescriptor(), left.data(), left.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throwWriteError(path, errno);
    left.remove_prefix(static_cast<std::size_t>(written));
  }
  file.commit();
}

}  // namespace tool
