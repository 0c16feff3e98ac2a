#include "tools/replaceFile.h"

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

[[noreturn]] void fail(const std::string& path, int error) {
  throw cFailure(eExit::BAD_INPUT,
                 fmt::format("cannot write to {}: {}. Give a file in a folder that you may write "
                             "to and that has room.",
                             path, std::strerror(error)));
}

/// A file beside the one to be replaced, gone with this unless it has taken its place.
class cFileBeside {
 public:
  explicit cFileBeside(const std::string& path)
      : asked(path),
        target(std::filesystem::weakly_canonical(path).string()),
        name(fmt::format("{}.part-{}", target, getpid())) {
    struct stat older {};
    const bool isThere = stat(target.c_str(), &older) == 0;
    if (isThere && !S_ISREG(older.st_mode)) fail(path, S_ISDIR(older.st_mode) ? EISDIR : EINVAL);
    unlink(name.c_str());  // of a process of the same id that crashed
    fd = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) fail(path, errno);
    if (isThere) fchmod(fd, older.st_mode & 0777);
  }
  cFileBeside(const cFileBeside&) = delete;
  cFileBeside& operator=(const cFileBeside&) = delete;
  ~cFileBeside() {
    if (fd >= 0) close(fd);
    if (!hasMoved) unlink(name.c_str());
  }

  void write(std::string_view text) {
    while (!text.empty()) {
      const ssize_t written = ::write(fd, text.data(), text.size());
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) fail(asked, errno);
      text.remove_prefix(static_cast<std::size_t>(written));
    }
    if (fsync(fd) != 0) fail(asked, errno);  // some file systems tell only now that they are full
  }

  void takePlace() {
    if (rename(name.c_str(), target.c_str()) != 0) fail(asked, errno);
    hasMoved = true;
  }

 private:
  const std::string asked;
  const std::string target;  // where a symbolic link leads
  const std::string name;
  int fd = -1;
  bool hasMoved = false;
};

}  // namespace

void checkReplaceable(const std::string& path) { const cFileBeside trial(path); }

void replaceFile(const std::string& path, const std::string& text) {
  cFileBeside file(path);
  file.write(text);
  file.takePlace();
}

}  // namespace tool
