#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "tarvoscan/export.h"

namespace tarvo {

/// Another process that has a port open or locked. A plain value.
struct cPortUser {
  pid_t pid = 0;     ///< its process id
  std::string name;  ///< of its program; "" when the system does not say
};

/// "minicom (process 123), cat (process 124)". Any thread.
TARVOSCAN_API std::string toText(const std::vector<cPortUser>& users);

/// A serial device of this machine, seen from outside: nothing is opened. A plain value.
struct cSerialDevice {
  std::string path;  ///< /dev/tty...
  std::string
      byId;  ///< a name that stays with the device (/dev/serial/by-id); "" where it has none
  std::string byPath;        ///< a name that stays with the plug (/dev/serial/by-path)
  std::string owner;         ///< user name, or number
  std::string group;         ///< group name, or number
  bool isPermitted = false;  ///< this process may open it for reading and writing (access(2))
  std::string hint;          ///< what somebody who may not has to do
  /// Who has it; only root sees what other users' processes have open, but all see who has it
  /// locked.
  std::vector<cPortUser> users;
};

/// The device at `path`. One that is missing has neither owner nor group. Any thread.
TARVOSCAN_API cSerialDevice describeSerialDevice(const std::string& path);

/// All that the system has a driver for (/sys/class/tty), by path. Any thread.
TARVOSCAN_API std::vector<cSerialDevice> listSerialDevices();

}  // namespace tarvo
