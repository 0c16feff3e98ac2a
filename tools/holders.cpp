#include "tools/holders.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "tools/printable.h"

namespace tool {

namespace {

namespace fs = std::filesystem;
using cStatus = struct stat;

constexpr unsigned PTY_SLAVES = 136;  // major number of /dev/pts/*
const dev_t PTY_MASTER = makedev(5, 2);

std::string programOf(pid_t pid) {
  std::ifstream stream(fmt::format("/proc/{}/comm", pid));
  std::string line;
  std::getline(stream, line);
  return line;
}

/// The entries of a folder that are numbers: processes, descriptors. None of one that is gone or
/// may not be read.
std::vector<std::string> numbersIn(const std::string& folder) {
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
  for (const std::string& number : numbersIn(process + "/fd")) {
    cStatus opened;
    if (stat(fmt::format("{}/fd/{}", process, number).c_str(), &opened) != 0) continue;
    if (isMasterOf(device, opened, fmt::format("{}/fdinfo/{}", process, number))) return false;
    found = found || isSame(device, opened);
  }
  return found;
}

/// A line of /proc/locks: "1: FLOCK ADVISORY WRITE 123 00:18:5 0 EOF", file numbers in hex.
void addLocker(const std::string& line, const cStatus& device, std::set<pid_t>& pids) {
  std::istringstream words(line);
  std::string number, kind, manner, access, file;
  pid_t pid = 0;
  words >> number >> kind >> manner >> access >> pid >> file;
  const std::string ours =
      fmt::format("{:02x}:{:02x}:{}", major(device.st_dev), minor(device.st_dev), device.st_ino);
  if (words && kind == "FLOCK" && file == ours && pid > 0) pids.insert(pid);
}

}  // namespace

std::vector<cHolder> holdersOf(const std::string& path) {
  cStatus device;
  if (stat(path.c_str(), &device) != 0) return {};
  std::set<pid_t> lockers;
  std::ifstream locks("/proc/locks");
  for (std::string line; std::getline(locks, line);) addLocker(line, device, lockers);
  std::set<pid_t> pids = lockers;
  for (const std::string& number : numbersIn("/proc")) {
    if (hasOpen("/proc/" + number, device)) pids.insert(std::stoi(number));
  }
  pids.erase(getpid());
  std::vector<cHolder> holders;
  holders.reserve(pids.size());
  for (const pid_t pid : pids) holders.push_back({pid, programOf(pid), lockers.count(pid) > 0});
  return holders;
}

std::vector<cHolder> withoutLosers(std::vector<cHolder> holders) {
  const std::string own = programOf(getpid());
  const auto isLoser = [&own](const cHolder& holder) {
    return !holder.hasLock && holder.name == own;
  };
  holders.erase(std::remove_if(holders.begin(), holders.end(), isLoser), holders.end());
  return holders;
}

std::string toText(const std::vector<cHolder>& holders) {
  std::string text;
  for (const cHolder& holder : holders) {
    text += fmt::format("{}{} (process {})", text.empty() ? "" : ", ",
                        holder.name.empty() ? "unknown" : oneLine(holder.name), holder.pid);
  }
  return text;
}

}  // namespace tool
