#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tarvoscan/tarvoscan.h"
#include "tools/cli/simOptions.h"

namespace tool {

/// Where the user says that the sensor is.
struct cDeviceOptions {
  std::string device;      ///< "": the default one, or every one where there is a serial number
  int speed = 0;           ///< the line speed to look at, bits per second; 0: the usual ones
  int raisedSpeed = 0;     ///< the one to raise it to; 0: none
  std::string serial;      ///< the serial number that the sensor must have; "": any
  bool isWaiting = false;  ///< for a device or a sensor that is not there yet
  cSimFaults faults;       ///< of a simulated sensor
};

/// What the user scans: a tty, a serial number among the serial devices here, or a simulated sensor
/// inside the process as "sim:" [model] ["," dialect], such as "sim:long" or "sim:short,scip1",
/// which lives as long as this.
class cDevice {
 public:
  /// Reads `options`; see `defaultDevice` for none. Throws `cFailure` for a model or dialect that
  /// does not exist, and where there is nothing to look at.
  explicit cDevice(const cDeviceOptions& options);

  /// The name as the user gave it: the path, "sim:...", or the serial number.
  const std::string& getText() const { return text; }

  /// The name of the sensor that was found at `path`: that path, where a serial number alone was
  /// given.
  std::string getName(const std::string& path) const { return isListed ? path : text; }

  /// Paths that it may be on: of the serial devices, or of the simulated sensor.
  const std::vector<std::string>& getPaths() const { return paths; }

  /// Says that a sensor is looked for, where, and for how long.
  void announce() const;

  /// What a scanner needs to know of it.
  tarvo::cScannerOptions getScannerOptions() const;

 private:
  void simulate(const std::string& words);
  void chooseCandidates();

  const cDeviceOptions options;
  std::string text;
  std::unique_ptr<cSimSensor> simulated;  // empty for a real one
  std::vector<std::string> paths;
  bool isListed = false;  // they are candidates for a serial number
};

}  // namespace tool
