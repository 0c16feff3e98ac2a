#include "tarvoscan/port/portUsers.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace tarvo {

namespace {

namespace fs = std::filesystem;
using cStatus = struct stat;

constexpr unsigned PTY_SLAVES = 136;  // major number of /dev/pts/*
const dev_t PTY_MASTER = makedev(5, 2);

std::string firstLine(const std::string& file) {
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);
  return line;
}

/// The entries of a folder that are numbers: processes, descriptors. None of one that is gone or
/// may not be read.
std::vector<std::string> numericEntries(const std::string& folder) {
  std::vector<std::string> numbers;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename();
    if (name.find_first_not_of("0123456789") == std::string::npos) numbers.push_back(name);
  }
  return numbers;
}

bool isPty(const cStatus& device) { return major(device.st_rdev) == PTY_SLAVES; }

/// Pseudo-terminals of different containers bear the same numbers.
bool isSame(const cStatus& device, const cStatus& opened) {
  return S_ISCHR(opened.st_mode) && opened.st_rdev == device.st_rdev &&
         (!isPty(device) || opened.st_dev == device.st_dev);
}

bool isMasterOf(const cStatus& device, const cStatus& opened, const std::string& information) {
  if (!isPty(device) || !S_ISCHR(opened.st_mode) || opened.st_rdev != PTY_MASTER) return false;
  std::ifstream stream(information);
  std::string key;
  unsigned index = 0;
  while (stream >> key) {
    if (key == "tty-index:" && stream >> index && index == minor(device.st_rdev)) return true;
  }
  return false;
}

bool hasOpen(const std::string& process, const cStatus& device) {
  bool found = false;
  for (const std::string& number : numericEntries(process + "/fd")) {
    cStatus opened;
    if (stat(fmt::format("{}/fd/{}", process, number).c_str(), &opened) != 0) continue;
    if (isMasterOf(device, opened, fmt::format("{}/fdinfo/{}", process, number))) return false;
    found = found || isSame(device, opened);
  }
  return found;
}

/// The process of a line of /proc/locks such as "1: FLOCK ADVISORY WRITE 123 00:18:5 0 EOF", file
/// numbers in hex; 0: it is no lock of `device`.
pid_t lockOwner(const std::string& line, const cStatus& device) {
  std::istringstream words(line);
  std::string number, kind, manner, access, file;
  pid_t pid = 0;
  words >> number >> kind >> manner >> access >> pid >> file;
  const std::string ours =
      fmt::format("{:02x}:{:02x}:{}", major(device.st_dev), minor(device.st_dev), device.st_ino);
  return words && kind == "FLOCK" && file == ours ? pid : 0;
}

void addLockOwners(const cStatus& device, std::set<pid_t>& pids) {
  std::ifstream locks("/proc/locks");
  for (std::string line; std::getline(locks, line);) {
    if (const pid_t pid = lockOwner(line, device); pid > 0) pids.insert(pid);
  }
}

std::vector<cPortUser> describe(const std::set<pid_t>& pids) {
  std::vector<cPortUser> users;
  for (const pid_t pid : pids) {
    if (pid != getpid()) users.push_back({pid, firstLine(fmt::format("/proc/{}/comm", pid))});
  }
  return users;
}

}  // namespace

std::vector<cPortUser> findPortUsers(const std::string& path) {
  cStatus device;
  if (stat(path.c_str(), &device) != 0) return {};
  std::set<pid_t> pids;
  for (const std::string& number : numericEntries("/proc")) {
    if (hasOpen("/proc/" + number, device)) pids.insert(std::atoi(number.c_str()));
  }
  addLockOwners(device, pids);
  return describe(pids);
}

std::vector<cPortUser> findLockOwners(const std::string& path) {
  cStatus device;
  if (stat(path.c_str(), &device) != 0) return {};
  std::set<pid_t> pids;
  addLockOwners(device, pids);
  return describe(pids);
}

std::string toText(const std::vector<cPortUser>& users) {
  std::string text;
  for (const cPortUser& user : users) {
    text += fmt::format("{}{} (process {})", text.empty() ? "" : ", ",
                        user.name.empty() ? "unknown" : user.name, user.pid);
  }
  return text;
}

}  // namespace tarvo
