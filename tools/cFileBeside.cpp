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

void failToWrite(const std::string& path, int error) {
  throw cFailure(eExit::BAD_INPUT,
                 fmt::format("cannot write to {}: {}. Give a file in a folder that you may write "
                             "to and that has room.",
                             path, std::strerror(error)));
}

cFileBeside::cFileBeside(const std::string& path)
    : asked(path),
      target(std::filesystem::weakly_canonical(path).string()),
      name(fmt::format("{}.part-{}", target, getpid())) {
  struct stat older {};
  const bool isThere = stat(target.c_str(), &older) == 0;
  if (isThere && !S_ISREG(older.st_mode)) {
    failToWrite(path, S_ISDIR(older.st_mode) ? EISDIR : EINVAL);
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
