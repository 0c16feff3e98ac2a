#include "tarvoscan/cSerialDevice.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tarvoscan/port/portUsers.h"

namespace tarvo {

namespace {

namespace fs = std::filesystem;

// getpwuid and its kin share one buffer in the process; these have their own.
constexpr std::size_t NAME_BUFFER = 16384;

std::string userName(uid_t id) {
  passwd entry{};
  passwd* found = nullptr;
  std::vector<char> buffer(NAME_BUFFER);
  getpwuid_r(id, &entry, buffer.data(), buffer.size(), &found);
  return found != nullptr ? found->pw_name : std::to_string(id);
}

std::string groupName(gid_t id) {
  struct group entry {};
  struct group* found = nullptr;
  std::vector<char> buffer(NAME_BUFFER);
  getgrgid_r(id, &entry, buffer.data(), buffer.size(), &found);
  return found != nullptr ? found->gr_name : std::to_string(id);
}

/// Whether the system lists `user` as a member, whatever groups this process was given at its
/// login.
bool isMember(uid_t user, gid_t group) {
  passwd entry{};
  passwd* found = nullptr;
  std::vector<char> buffer(NAME_BUFFER);
  getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found);
  if (found == nullptr) return false;
  int count = static_cast<int>(std::max(sysconf(_SC_NGROUPS_MAX), 1L));
  std::vector<gid_t> groups(static_cast<std::size_t>(count));
  if (getgrouplist(found->pw_name, found->pw_gid, groups.data(), &count) < 0) return false;
  groups.resize(static_cast<std::size_t>(count));
  return std::find(groups.begin(), groups.end(), group) != groups.end();
}

bool groupHasAccess(const struct stat& status) {
  constexpr mode_t BOTH = S_IRGRP | S_IWGRP;
  return (status.st_mode & BOTH) == BOTH && status.st_gid != 0;
}

std::string hintFor(const cSerialDevice& device, const struct stat& status) {
  if (!groupHasAccess(status)) {
    return fmt::format(
        "Only {} may, and no group but the superuser's: 'sudo chmod a+rw {}' opens it to all until "
        "it is plugged in again.",
        device.owner, device.path);
  }
  if (isMember(geteuid(), status.st_gid)) {
    return fmt::format(
        "The group {} may, and you have joined it since you logged in: log out and in again.",
        device.group);
  }
  return fmt::format("The group {} may: join it by 'sudo usermod -aG {} {}', log out and in again.",
                     device.group, device.group, userName(geteuid()));
}

/// A board's unused serial ports have a name and a type of 0: nothing is behind them.
bool hasDriver(const fs::path& entry) {
  std::error_code error;
  if (!fs::exists(entry / "device" / "driver", error)) return false;
  std::string type = "unknown";
  std::ifstream(entry / "type") >> type;
  return type != "0";
}

/// The link in /dev/serial/`kind` that leads to `path`.
std::string stableName(const char* kind, const std::string& path) {
  std::error_code error;
  fs::directory_iterator entry(fs::path("/dev/serial") / kind, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::error_code unrelated;
    if (fs::equivalent(entry->path(), path, unrelated)) return entry->path();
  }
  return "";
}

}  // namespace

cSerialDevice describeSerialDevice(const std::string& path) {
  cSerialDevice device;
  device.path = path;
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return device;
  device.byId = stableName("by-id", path);
  device.byPath = stableName("by-path", path);
  device.owner = userName(status.st_uid);
  device.group = groupName(status.st_gid);
  device.isPermitted = faccessat(AT_FDCWD, path.c_str(), R_OK | W_OK, AT_EACCESS) == 0;
  if (!device.isPermitted) device.hint = hintFor(device, status);
  device.users = findPortUsers(path);
  return device;
}

std::vector<cSerialDevice> listSerialDevices() {
  std::vector<std::string> paths;
  std::error_code error;
  fs::directory_iterator entry("/sys/class/tty", error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    const std::string path = "/dev/" + entry->path().filename().string();
    std::error_code missing;
    if (hasDriver(entry->path()) && fs::is_character_file(path, missing)) paths.push_back(path);
  }
  std::sort(paths.begin(), paths.end());
  std::vector<cSerialDevice> devices;
  devices.reserve(paths.size());
  for (const std::string& path : paths) devices.push_back(describeSerialDevice(path));
  return devices;
}

}  // namespace tarvo
