#include "tools/cAccess.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "tools/printable.h"

namespace tool {

namespace {

std::string userName(uid_t id) {
  const passwd* const user = getpwuid(id);
  return user != nullptr ? user->pw_name : std::to_string(id);
}

std::string groupName(gid_t id) {
  const struct group* const found = getgrgid(id);
  return found != nullptr ? found->gr_name : std::to_string(id);
}

/// True for a member by the system's books, whatever this process was given at its login.
bool isMember(uid_t user, gid_t wanted) {
  const passwd* const known = getpwuid(user);
  if (known == nullptr) return false;
  int count = static_cast<int>(sysconf(_SC_NGROUPS_MAX));
  std::vector<gid_t> groups(static_cast<std::size_t>(std::max(count, 1)));
  if (getgrouplist(known->pw_name, known->pw_gid, groups.data(), &count) < 0) return false;
  groups.resize(static_cast<std::size_t>(count));
  return std::find(groups.begin(), groups.end(), wanted) != groups.end();
}

}  // namespace

cAccess::cAccess(const std::string& path) : device(path) {
  if (stat(path.c_str(), &status) != 0) return;
  owner = userName(status.st_uid);
  group = groupName(status.st_gid);
  permitted = faccessat(AT_FDCWD, path.c_str(), R_OK | W_OK, AT_EACCESS) == 0;
}

bool cAccess::isGroupEnough() const {
  constexpr mode_t BOTH = S_IRGRP | S_IWGRP;
  return (status.st_mode & BOTH) == BOTH && status.st_gid != 0;
}

std::string cAccess::getCure() const {
  if (!isGroupEnough()) {
    return fmt::format(
        "Only {} may, and no group but the superuser's: 'sudo chmod a+rw {}' opens it to all until "
        "it is plugged in again.",
        owner, oneLine(device));
  }
  if (isMember(geteuid(), status.st_gid)) {
    return fmt::format(
        "The group {} may, and you have joined it since you logged in: log out and in again.",
        group);
  }
  return fmt::format("The group {} may: join it by 'sudo usermod -aG {} {}', log out and in again.",
                     group, group, userName(geteuid()));
}

}  // namespace tool
