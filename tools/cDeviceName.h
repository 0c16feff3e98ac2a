#ifndef TARVOLINK_TOOLS_CDEVICENAME_H
#define TARVOLINK_TOOLS_CDEVICENAME_H

#include <map>
#include <string>

#include "sim/tarvosim.h"

namespace tool {

/// The names of the simulated models and dialects on a command line.
const std::map<std::string, eSimModel>& simModels();
const std::map<std::string, eSimDialect>& simDialects();

/// What DEVICE names: a tty, or a simulated sensor inside the process as "sim:" [model]
/// ["," dialect], such as "sim:long" or "sim:short,scip1".
class cDeviceName {
 public:
  /// Reads `device`; "" is the default device, "sim:". Throws `cFailure` for a model or dialect
  /// that does not exist. Nothing is opened.
  explicit cDeviceName(const std::string& device);

  bool isSimulated() const { return simulated; }
  bool isDefault() const { return text.empty(); }

  /// The name as messages have it: the path, or "sim:...".
  std::string getText() const { return isDefault() ? "sim:" : text; }

  /// How to make the simulated sensor; defaults for what was not named.
  const cSimSetting& getSetting() const { return setting; }

 private:
  void choose(const std::string& word);

  const std::string text;
  const bool simulated;
  cSimSetting setting;
};

}  // namespace tool

#endif
