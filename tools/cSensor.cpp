#include "tools/cSensor.h"

#include <fmt/format.h>

#include <boost/make_shared.hpp>
#include <functional>
#include <stdexcept>

#include "tools/cSearch.h"
#include "tools/printMessage.h"
#include "tools/printable.h"

namespace tool {

namespace {

constexpr int STOP_TRIES = 5;  // what an earlier program left may fill the line for a while
constexpr int FETCH_TRIES = 3;

std::unique_ptr<cSimSensor> simulate(const cDeviceName& device) {
  if (!device.isSimulated()) return nullptr;
  return std::make_unique<cSimSensor>(device.getSetting());
}

boost::shared_ptr<kavTBX::cPortSetting> settingFor(const cDeviceName& device) {
  auto setting = boost::make_shared<kavTBX::cPortSetting>();
  if (device.getSpeed() != 0) setting->baudRate = device.getSpeed();
  return setting;
}

/// Calls `command` until `isDone` holds, `tries` times at most. An answer that the library cannot
/// take apart (std::out_of_range) is one that did not come.
void retry(int tries, const std::function<void()>& command, const std::function<bool()>& isDone) {
  for (int i = 0; i < tries && !isDone(); ++i) {
    try {
      command();
    } catch (const std::out_of_range&) {
    }
  }
}

}  // namespace

cSensor::cSensor(const cDeviceName& device, cShutdown& stop)
    : simulated(simulate(device)),
      path(simulated ? simulated->getPath() : device.getText()),
      port(path),
      setting(settingFor(device)),
      watched(openPort()),
      link(boost::make_shared<cTarvoLink>(watched)) {
  const cShutdown::cExitImmediately exitImmediately(stop);
  driver = find(device, stop);
  if (isOld()) guard.emplace();
  scanning = driver->getSCIP2IF();
  stopLeftoverScan();
  fetchMissing();
}

boost::shared_ptr<cWatchedPort> cSensor::openPort() const {
  auto opened = boost::make_shared<cWatchedPort>(path, setting);
  port.giveBackTerminal();
  return opened;
}

boost::shared_ptr<cSensorDriver> cSensor::find(const cDeviceName& device, cShutdown& stop) const {
  const std::string name = oneLine(device.getText());
  if (device.getSpeed() != 0) {
    printMessage(fmt::format("looking for a sensor on {} at {} bits/s", name, device.getSpeed()));
    return cSearch(name, port, *watched, link, {device.getSpeed()}).run(stop);
  }
  printMessage(fmt::format("looking for a sensor on {} (up to 69 s when nothing answers)", name));
  return cSearch(name, port, *watched, link, cSensorDriverManager::getSearchSpeeds()).run(stop);
}

bool cSensor::isOld() const {
  return dynamic_cast<const cSensorDriverSCIP1*>(driver.get()) != nullptr;
}

std::string cSensor::getDialect() const {
  if (isOld()) return "SCIP 1.x";
  const bool isSwitched = info().getLastRawCommand() == "SCIP2.0";
  return isSwitched ? "SCIP 2.0, switched from SCIP 1.x" : "SCIP 2.0";
}

cSCIPRecord cSensor::getLastRecord() const {
  boost::mutex::scoped_lock lock(link->mutex);
  return link->record;
}

void cSensor::stopLeftoverScan() const {
  bool isStopped = false;
  retry(
      STOP_TRIES, [&] { isStopped = scanner().stopAll() == 0; }, [&] { return isStopped; });
}

bool cSensor::turnLaserOff() const {
  bool isOff = false;
  auto* const scip1 = dynamic_cast<cSensorDriverSCIP1*>(driver.get());
  const auto turnOff = [&] { return scip1 ? scip1->doLaser(false) : scanner().stopAll(); };
  retry(
      STOP_TRIES, [&] { isOff = turnOff() == 0; }, [&] { return isOff; });
  return isOff;
}

void cSensor::fetchMissing() const {
  retry(
      FETCH_TRIES, [&] { scanner().fetchVersionStr(); }, [&] { return hasIdentity(); });
  retry(
      FETCH_TRIES, [&] { scanner().fetchParameters(); }, [&] { return hasParameters(); });
  bool known = false;
  retry(
      FETCH_TRIES, [&] { known = scanner().updateStatus() == 0; }, [&] { return known; });
}

bool cSensor::hasIdentity() const { return !info().getProd().empty(); }

bool cSensor::hasParameters() const {
  return info().getNumSpot() > 0 && info().getMaxSpot() > info().getMinSpot() &&
         info().getMaxDist() > 0;
}

}  // namespace tool
