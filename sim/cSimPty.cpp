#include "sim/cSimPty.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include "sim/cSimError.h"

namespace {

int openMaster() {
  const int fd = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) throwSimError("no pseudo-terminal available (posix_openpt)");
  return fd;
}

std::string unlockSlave(int master) {
  char name[128];
  if (grantpt(master) != 0 || unlockpt(master) != 0)
    throwSimError("the pseudo-terminal cannot be unlocked (grantpt, unlockpt)");
  const int error = ptsname_r(master, name, sizeof name);
  if (error != 0) throwSimError("the pseudo-terminal has no name (ptsname_r)", error);
  return name;
}

int openSlave(const std::string& path) {
  const int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (fd < 0) throwSimError("cannot open " + path);
  return fd;
}

}  // namespace

cSimDescriptor::~cSimDescriptor() { close(fd); }

cSimPty::cSimPty(speed_t speed)
    : master(openMaster()), path(unlockSlave(master.get())), slave(openSlave(path)) {
  termios modes;
  if (tcgetattr(slave.get(), &modes) != 0) throwSimError("cannot read the modes of " + path);
  // Before anyone can write: a line that echoes would send the sensor its own answers back.
  cfmakeraw(&modes);
  if (speed != B0) cfsetspeed(&modes, speed);
  if (tcsetattr(slave.get(), TCSANOW, &modes) != 0)
    throwSimError("cannot set the modes of " + path);
}

speed_t cSimPty::hostSpeed() const {
  termios modes;
  return tcgetattr(master.get(), &modes) == 0 ? cfgetospeed(&modes) : speed_t(B0);
}
