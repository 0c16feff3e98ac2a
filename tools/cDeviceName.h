#pragma once

#include <map>
#include <string>

#include "sim/tarvosim.h"

namespace tool {

/// The names of the simulated models and dialects on a command line.
const std::map<std::string, eSimModel>& simModels();
const std::map<std::string, eSimDialect>& simDialects();

/// Where the user says that the sensor is.
struct cDeviceOptions {
  std::string device;  ///< "": the default one
  int speed = 0;       ///< the line speed to look at, bits per second; 0: the usual ones
};

/// What DEVICE names: a tty, or a simulated sensor inside the process as "sim:" [model]
/// ["," dialect], such as "sim:long" or "sim:short,scip1".
class cDeviceName {
 public:
  /// Reads `options`; see `defaultDevice` for none. Throws `cFailure` for a model or dialect that
  /// does not exist. Nothing is opened.
  explicit cDeviceName(const cDeviceOptions& options);

  bool isSimulated() const { return simulated; }

  /// The name as messages have it: the path, or "sim:...".
  const std::string& getText() const { return text; }

  /// The only line speed to look at, bits per second; 0: the usual ones.
  int getSpeed() const { return speed; }

  /// How to make the simulated sensor; defaults for what was not named.
  const cSimSetting& getSetting() const { return setting; }

 private:
  void choose(const std::string& word);

  const std::string text;
  const int speed;
  const bool simulated;
  cSimSetting setting;
};

}  // namespace tool
