#include "tools/cFileBeside.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "tools/cFailure.h"

namespace tool {

namespace {

namespace fs = std::filesystem;

constexpr int MOST_LINKS = 40;  // as the kernel follows

/// Where symbolic links lead, also if nothing is there yet.
std::string endOfLinks(fs::path path) {
  std::error_code error;
  for (int i = 0; i < MOST_LINKS && fs::is_symlink(path, error); ++i) {
    path = path.parent_path() / fs::read_symlink(path, error);
  }
  return path;
}

}  // namespace

void failToWrite(const std::string& path, int error) {
  throw cFailure(eExit::BAD_INPUT,
                 fmt::format("cannot write to {}: {}. Give a file and a folder that you may write "
                             "to and that have room.",
                             path, std::strerror(error)));
}

cFileBeside::cFileBeside(const std::string& path)
    : asked(path), target(endOfLinks(path)), name(fmt::format("{}.part-{}", target, getpid())) {
  struct stat older {};
  const bool isThere = stat(target.c_str(), &older) == 0;
  if (!isThere && errno != ENOENT) failToWrite(path, errno);
  if (isThere && !S_ISREG(older.st_mode)) {
    failToWrite(path, S_ISDIR(older.st_mode) ? EISDIR : EINVAL);
  }
  // A new file could take the place of one that is protected against just that.
  if (isThere && faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) {
    failToWrite(path, errno);
  }
  unlink(name.c_str());  // of a process of the same id that crashed
  fd = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (fd < 0) failToWrite(path, errno);
  if (isThere) fchmod(fd, older.st_mode & 0777);
}

cFileBeside::~cFileBeside() {
  close(fd);
  if (!isKept) unlink(name.c_str());
}

void cFileBeside::takePlace() {
  if (fsync(fd) != 0)
    failToWrite(asked, errno);  // some file systems tell only now that they are full
  if (rename(name.c_str(), target.c_str()) != 0) failToWrite(asked, errno);
  isKept = true;
}

}  // namespace tool
