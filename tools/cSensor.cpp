#include "tools/cSensor.h"

#include <fmt/format.h>

#include <boost/make_shared.hpp>
#include <functional>
#include <stdexcept>

#include "tools/cSearch.h"
#include "tools/notice.h"

namespace tool {

namespace {

constexpr int QUIETEN_TRIES = 5;  // what an earlier program left may fill the line for a while
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

cSensor::cSensor(const cDeviceName& device, cStop& stop)
    : simulated(simulate(device)),
      path(simulated ? simulated->getPath() : device.getText()),
      port(path),
      setting(settingFor(device)),
      watched(openPort()),
      link(boost::make_shared<cTarvoLink>(watched)) {
  const cStop::cAtOnce nothingToStop(stop);
  driver = find(device, stop);
  if (isOld()) guard.emplace();
  scanning = driver->getSCIP2IF();
  quieten();
  fetchMissing();
}

boost::shared_ptr<cWatchedPort> cSensor::openPort() const {
  auto opened = boost::make_shared<cWatchedPort>(path, setting);
  port.giveBackTerminal();
  return opened;
}

boost::shared_ptr<cSensorDriver> cSensor::find(const cDeviceName& device, cStop& stop) const {
  const std::string& name = device.getText();
  if (device.getSpeed() != 0) {
    notice(fmt::format("looking for a sensor on {} at {} bits/s", name, device.getSpeed()));
    return cSearch(name, port, *watched, link, {device.getSpeed()}).run(stop);
  }
  notice(fmt::format("looking for a sensor on {} (up to 69 s when nothing answers)", name));
  return cSearch(name, port, *watched, link, cSearch::usualSpeeds()).run(stop);
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

void cSensor::quieten() const {
  bool quiet = false;
  retry(
      QUIETEN_TRIES, [&] { quiet = scanner().stopAll() == 0; }, [&] { return quiet; });
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
