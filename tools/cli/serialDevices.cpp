#include "tools/cli/serialDevices.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "tools/base/cFailure.h"
#include "tools/base/messages.h"
#include "tools/base/printable.h"

namespace tool {

namespace {

constexpr auto DEVICES = "TARVOLINK_DEVICES";

std::vector<tarvo::cSerialDevice> namedByUser(const char* list) {
  std::vector<tarvo::cSerialDevice> devices;
  std::istringstream words(list);
  for (std::string path; std::getline(words, path, ':');) {
    std::error_code error;
    const bool isKnown = std::any_of(devices.begin(), devices.end(),
                                     [&](const auto& device) { return device.path == path; });
    if (path.empty() || isKnown) continue;
    if (std::filesystem::is_character_file(path, error)) {
      devices.push_back(tarvo::describeSerialDevice(path));
    } else {
      printNote(fmt::format("{} names {}, which is no device here", DEVICES, oneLine(path)));
    }
  }
  return devices;
}

std::string choicesOf(const std::vector<tarvo::cSerialDevice>& devices) {
  std::string text;
  for (const auto& device : devices) {
    text += fmt::format("\n  {}  {}", oneLine(device.path), oneLine(device.byId));
    text.erase(text.find_last_not_of(' ') + 1);
  }
  return text;
}

}  // namespace

std::vector<tarvo::cSerialDevice> serialDevices() {
  const char* const named = std::getenv(DEVICES);
  return named != nullptr ? namedByUser(named) : tarvo::listSerialDevices();
}

std::string defaultDevice() {
  const auto devices = serialDevices();
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
  const tarvo::cSerialDevice& only = devices.front();
  if (!only.isPermitted) {
    throw cFailure(
        eExit::BAD_INPUT,
        fmt::format("no DEVICE given, and the only serial device, {}, may not be opened. "
                    "{} 'sim:' is a simulated sensor.",
                    oneLine(only.path), only.hint));
  }
  printNote(
      fmt::format("no DEVICE given: using the only serial device here, {}", oneLine(only.path)));
  return only.path;
}

bool isFree(const tarvo::cSerialDevice& device) {
  return device.isPermitted && device.users.empty();
}

}  // namespace tool
