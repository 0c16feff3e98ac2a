#include "tools/cli/cDevice.h"

#include <fmt/format.h>

#include <sstream>

#include "tools/base/cFailure.h"
#include "tools/base/messages.h"
#include "tools/base/printable.h"
#include "tools/cli/serialDevices.h"

namespace tool {

namespace {

const std::string SIM_PREFIX = "sim:";

cSimSetting settingFor(const std::string& name) {
  cSimSetting setting;
  std::istringstream words(name.substr(SIM_PREFIX.size()));
  for (std::string word; std::getline(words, word, ',');) {
    const auto model = simModels().find(word);
    const auto dialect = simDialects().find(word);
    if (model != simModels().end()) {
      setting.model = model->second;
    } else if (dialect != simDialects().end()) {
      setting.dialect = dialect->second;
    } else if (!word.empty()) {
      throw cFailure(eExit::BAD_INPUT,
                     fmt::format("there is no simulated sensor \"{}\": \"{}\" is no model and no "
                                 "dialect. Give sim:short, sim:middle or sim:long, and after a "
                                 "comma scip2, scip1 or scip1-switch.",
                                 oneLine(name), oneLine(word)));
    }
  }
  return setting;
}

}  // namespace

cDevice::cDevice(const cDeviceOptions& options) : options(options), text(options.device) {
  if (text + ":" == SIM_PREFIX) {
    throw cFailure(eExit::BAD_INPUT, "there is no device \"sim\": did you mean \"sim:\"?");
  }
  const bool isSimulated = text.rfind(SIM_PREFIX, 0) == 0;
  if (!isSimulated && !options.faults.faults.empty()) {
    throw cFailure(eExit::BAD_INPUT,
                   "--fault is for simulated sensors: give a DEVICE such as sim: with it.");
  }
  if (isSimulated) {
    simulate(text);
  } else if (text.empty() && !options.serial.empty()) {
    chooseCandidates();
  } else {
    if (text.empty()) text = defaultDevice();
    paths = {text};
  }
}

void cDevice::simulate(const std::string& name) {
  simulated = std::make_unique<cSimSensor>(settingFor(name));
  options.faults.apply(*simulated);
  paths = {simulated->getPath()};
}

/// The serial devices that `list --probe` would look at.
void cDevice::chooseCandidates() {
  for (const auto& device : serialDevices()) {
    if (isFree(device)) paths.push_back(device.path);
  }
  text = options.serial;
  isListed = true;
  if (!paths.empty()) return;
  throw cFailure(eExit::BAD_INPUT,
                 fmt::format("there is no serial device that could be the sensor {}. Plug it in; "
                             "'tarvolink list' shows the devices here and who has them.",
                             oneLine(options.serial)));
}

void cDevice::announce() const {
  std::string places = oneLine(text);
  if (isListed) {
    places.clear();
    for (const auto& path : paths) places += (places.empty() ? "" : ", ") + oneLine(path);
  }
  const std::string what =
      options.serial.empty() ? "a sensor" : "the sensor " + oneLine(options.serial);
  const std::string how = options.speed == 0 ? " (up to 5 s when nothing answers)"
                                             : fmt::format(" at {} bits/s", options.speed);
  printNote(fmt::format("looking for {} on {}{}", what, places, how));
}

tarvo::cScannerOptions cDevice::getScannerOptions() const {
  tarvo::cScannerOptions wanted(paths.front());
  wanted.otherDevices.assign(paths.begin() + 1, paths.end());
  wanted.serial = options.serial;
  wanted.lineSpeed = options.speed;
  wanted.raisedSpeed = options.raisedSpeed;
  return wanted;
}

}  // namespace tool
