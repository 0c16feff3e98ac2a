#pragma once

#include <string>
#include <vector>

#include "tools/cAccess.h"
#include "tools/holders.h"

namespace tool {

/// One serial device of this machine, seen from outside: nothing is opened.
class cSerialDevice {
 public:
  explicit cSerialDevice(const std::string& devicePath);

  /// All that are there, by path: those that the system has a driver for (/sys/class/tty), or, if
  /// the environment has TARVOLINK_DEVICES, the paths in it, parted by ":".
  static std::vector<cSerialDevice> all();

  const std::string& getPath() const { return path; }
  /// Names that stay the same when other devices come and go; "" where there is none.
  const std::string& getById() const { return byId; }
  const std::string& getByPath() const { return byPath; }
  const cAccess& getAccess() const { return access; }
  const std::vector<cHolder>& getHolders() const { return holders; }

 private:
  std::string path;
  std::string byId;
  std::string byPath;
  cAccess access;
  std::vector<cHolder> holders;
};

/// The device to use where the user names none: the only serial device; says on standard error
/// which. Throws `cFailure` when there is none, when there are several, listing them, or when the
/// only one may not be opened.
std::string defaultDevice();

}  // namespace tool
