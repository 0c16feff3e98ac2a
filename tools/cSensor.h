#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "tarvolink/tarvolink.h"
#include "tools/cAbortGuard.h"
#include "tools/cDeviceName.h"
#include "tools/cPort.h"
#include "tools/cShutdown.h"
#include "tools/cWatchedPort.h"

namespace tool {

/// The sensor behind DEVICE, found and ready for commands: nothing runs on it any more, and what
/// it tells of itself is known as far as it answers. Belongs to one thread.
class cSensor {
 public:
  /// Opens `device` and looks for its sensor, which takes up to about a minute; says on standard
  /// error what it does. A signal meanwhile ends the process. Throws `cTransientError` when the
  /// device cannot be used or nothing answers on it.
  cSensor(const cDeviceName& device, cShutdown& stop);

  const cSensorDriver& info() const { return *driver; }
  iSCIP2IF& scanner() const { return *scanning; }

  /// The line speed at which the sensor was found, bits per second.
  int getLineSpeed() const { return setting->baudRate; }

  /// What it speaks, as "SCIP 2.0".
  std::string getDialect() const;

  /// True for one that speaks only SCIP 1.x: it scans by repeated "G" commands, has no sums, and
  /// does not tell its geometry.
  bool isOld() const;

  /// True once the device is gone.
  bool isGone() const { return port.isGone(); }

  /// Turns the laser off ("QT", which stops a scan as well; SCIP 1.x: "L1"). Whether the sensor has
  /// confirmed it.
  bool turnLaserOff() const;

  /// From now on a record that never ends is given up: the one under way after `patience`, each
  /// later one when an answer's time is over.
  void limitRecords(std::chrono::milliseconds patience) const {
    watched->watch(getLineSpeed(), patience);
  }

  /// Characters received since it was looked for at its line speed.
  std::size_t getHeard() const { return watched->getTraffic().heard; }

  /// The latest response; of a running scan too.
  cSCIPRecord getLastRecord() const;

 private:
  boost::shared_ptr<cWatchedPort> openPort() const;
  boost::shared_ptr<cSensorDriver> find(const cDeviceName& device, cShutdown& stop) const;
  void stopLeftoverScan() const;
  void fetchMissing() const;
  bool hasIdentity() const;
  bool hasParameters() const;

  // The driver goes before the sensor that it talks to.
  const std::unique_ptr<cSimSensor> simulated;  // empty for a real one
  const std::string path;
  const cPort port;
  const boost::shared_ptr<kavTBX::cPortSetting> setting;  // the search leaves the speed in it
  const boost::shared_ptr<cWatchedPort> watched;
  const boost::shared_ptr<cTarvoLink> link;
  std::optional<cAbortGuard> guard;  // of a SCIP 1.x driver, until its thread has ended
  boost::shared_ptr<cSensorDriver> driver;
  iSCIP2IF* scanning = nullptr;  // the driver's
};

}  // namespace tool
