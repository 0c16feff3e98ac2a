#include "bench/cPty.h"

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>

#include <cerrno>
#include <system_error>

namespace {

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

cDescriptor openMaster() {
  cDescriptor master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  if (master.get() < 0 || grantpt(master.get()) != 0 || unlockpt(master.get()) != 0) {
    fail("no pseudo-terminal available");
  }
  return master;
}

cDescriptor openSlave(const std::string& path) {
  cDescriptor slave(open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  termios modes{};
  if (tcgetattr(slave.get(), &modes) != 0) fail("the pseudo-terminal cannot be opened");
  cfmakeraw(&modes);
  if (tcsetattr(slave.get(), TCSANOW, &modes) != 0) fail("the pseudo-terminal cannot be made raw");
  return slave;
}

}  // namespace

cPty::cPty() : master(openMaster()), path(ptsname(master.get())), slave(openSlave(path)) {}

void cPty::close() {
  master.close();
  slave.close();
}
