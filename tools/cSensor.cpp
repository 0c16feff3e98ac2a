#include "tools/cSensor.h"

#include <fmt/format.h>

#include <boost/make_shared.hpp>
#include <functional>
#include <stdexcept>

#include "tools/cFailure.h"
#include "tools/notice.h"

namespace tool {

namespace {

constexpr int QUIETEN_TRIES = 5;  // what an earlier program left may fill the line for a while
constexpr int FETCH_TRIES = 3;

std::unique_ptr<cSimSensor> simulate(const cDeviceName& device) {
  if (device.isDefault()) notice("no DEVICE given, using the simulated sensor sim:");
  return device.isSimulated() ? std::make_unique<cSimSensor>(device.getSetting()) : nullptr;
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
      setting(boost::make_shared<kavTBX::cPortSetting>()) {
  const cStop::cAtOnce nothingToStop(stop);
  driver = find(device.getText());
  quieten();
  fetchMissing();
}

boost::shared_ptr<cSensorDriver> cSensor::find(const std::string& name) const {
  notice(fmt::format("looking for a sensor on {} (up to 62 s when nothing answers)", name));
  const auto portbuf = boost::make_shared<kavTBX::basic_portbuf<char>>(path, setting);
  port.giveBackTerminal();
  auto found = cSensorDriverManager::create(portbuf);
  if (!found) {
    throw cFailure(eExit::NO_SENSOR,
                   fmt::format("no sensor answers on {}: 115200, 500000, 19200 and 57600 bits/s "
                               "were tried three times each. Check its power and its cable, and "
                               "that this is the right device and no other program uses it.",
                               name));
  }
  return found;
}

std::string cSensor::getDialect() const {
  const bool isOld = dynamic_cast<const cSensorDriverSCIP1*>(driver.get()) != nullptr;
  return isOld ? "SCIP 1.x" : "SCIP 2.0";
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
