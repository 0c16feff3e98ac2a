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

cSimLink::cSimLink(const std::string& link, const std::string& target) : path(link), aim(target) {
  if (path.empty()) return;
  refuseOtherFiles(path);
  const std::string slave = target.substr(target.rfind('/') + 1);
  const std::string fresh = path + ".new." + std::to_string(getpid()) + "." + slave;
  unlink(fresh.c_str());
  if (symlink(target.c_str(), fresh.c_str()) != 0) throwSimError("cannot make the link " + path);
  if (rename(fresh.c_str(), path.c_str()) == 0) return;
  const int error = errno;
  unlink(fresh.c_str());
  throwSimError("cannot make the link " + path, error);
}

cSimLink::~cSimLink() {
  if (path.empty()) return;
  char now[PATH_MAX];
  const ssize_t length = readlink(path.c_str(), now, sizeof now);
  if (length > 0 && aim == std::string(now, static_cast<std::size_t>(length))) unlink(path.c_str());
}
