#include "tools/cSerialDevice.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tools/cFailure.h"
#include "tools/printMessage.h"
#include "tools/printable.h"

namespace tool {

namespace {

namespace fs = std::filesystem;

constexpr auto DEVICES = "TARVOLINK_DEVICES";

bool isThere(const std::string& path) {
  std::error_code error;
  return fs::is_character_file(path, error);
}

/// Names of serial ports that a board might have had carry a type of 0: nothing is behind them.
bool hasDriver(const fs::path& entry) {
  std::error_code error;
  if (!fs::exists(entry / "device" / "driver", error)) return false;
  std::string type = "unknown";
  std::ifstream(entry / "type") >> type;
  return type != "0";
}

std::vector<std::string> namedByUser(const char* list) {
  std::vector<std::string> paths;
  std::istringstream words(list);
  for (std::string word; std::getline(words, word, ':');) {
    if (!word.empty()) paths.push_back(word);
  }
  return paths;
}

std::vector<std::string> knownToSystem() {
  std::vector<std::string> paths;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator("/sys/class/tty", error)) {
    if (hasDriver(entry.path())) paths.push_back("/dev/" + entry.path().filename().string());
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

/// The link in /dev/serial/`kind` that leads to `path`.
std::string stableName(const char* kind, const std::string& path) {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(fs::path("/dev/serial") / kind, error)) {
    if (fs::equivalent(entry.path(), path, error)) return entry.path();
  }
  return "";
}

std::string choicesOf(const std::vector<cSerialDevice>& devices) {
  std::string text;
  for (const cSerialDevice& device : devices) {
    text += fmt::format("\n  {}  {}", oneLine(device.getPath()), oneLine(device.getById()));
    text.erase(text.find_last_not_of(' ') + 1);
  }
  return text;
}

}  // namespace

cSerialDevice::cSerialDevice(const std::string& devicePath)
    : path(devicePath),
      byId(stableName("by-id", path)),
      byPath(stableName("by-path", path)),
      access(path),
      holders(holdersOf(path)) {}

std::vector<cSerialDevice> cSerialDevice::all() {
  const char* const named = std::getenv(DEVICES);
  std::vector<cSerialDevice> devices;
  for (const auto& path : named != nullptr ? namedByUser(named) : knownToSystem()) {
    if (isThere(path)) {
      devices.emplace_back(path);
    } else if (named != nullptr) {
      printMessage(fmt::format("{} names {}, which is no device here", DEVICES, oneLine(path)));
    }
  }
  return devices;
}

std::string defaultDevice() {
  const auto devices = cSerialDevice::all();
  if (devices.empty()) {
    throw cFailure(eExit::BAD_INPUT,
                   fmt::format("no DEVICE given, and {}. Plug the sensor in, or name its DEVICE; "
                               "'sim:' is a simulated sensor.",
                               std::getenv(DEVICES) == nullptr
                                   ? "there is no serial device here"
                                   : std::string("none that ") + DEVICES + " names is here"));
  }
  if (devices.size() > 1) {
    throw cFailure(eExit::BAD_INPUT,
                   fmt::format("no DEVICE given, and there are several serial devices:{}\nName the "
                               "one to use; 'sim:' is a simulated sensor.",
                               choicesOf(devices)));
  }
  const cSerialDevice& only = devices.front();
  if (!only.getAccess().mayOpen()) {
    throw cFailure(
        eExit::BAD_INPUT,
        fmt::format("no DEVICE given, and the only serial device, {}, may not be opened. "
                    "{} 'sim:' is a simulated sensor.",
                    oneLine(only.getPath()), only.getAccess().getCure()));
  }
  printMessage(fmt::format("no DEVICE given: using the only serial device here, {}",
                           oneLine(only.getPath())));
  return only.getPath();
}

}  // namespace tool
