#include "sim/cSimLink.h"

#include <limits.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include "sim/cSimError.h"

namespace {

void refuseOtherFiles(const std::string& path) {
  struct stat status;
  if (lstat(path.c_str(), &status) == 0 && !S_ISLNK(status.st_mode))
    throwSimError("the link " + path + " would replace a file; remove it or name another link",
                  EEXIST);
}

}  // namespace

cSimLink::cSimLink(const std::string& path, const std::string& target)
    : path(path), target(target) {
  if (path.empty()) return;
  refuseOtherFiles(path);
  // rename(2) replaces in one step, so that a host that opens the link meanwhile finds a sensor.
  // The temporary name is this sensor's own, also among those of one process.
  const std::string slave = target.substr(target.rfind('/') + 1);
  const std::string temporary = path + ".new." + std::to_string(getpid()) + "." + slave;
  unlink(temporary.c_str());
  if (symlink(target.c_str(), temporary.c_str()) != 0)
    throwSimError("cannot create the link " + path);
  if (rename(temporary.c_str(), path.c_str()) == 0) return;
  const int error = errno;
  unlink(temporary.c_str());
  throwSimError("cannot create the link " + path, error);
}

cSimLink::~cSimLink() {
  if (path.empty()) return;
  char present[PATH_MAX];
  const ssize_t length = readlink(path.c_str(), present, sizeof present);
  if (length > 0 && target == std::string(present, static_cast<std::size_t>(length)))
    unlink(path.c_str());
}
