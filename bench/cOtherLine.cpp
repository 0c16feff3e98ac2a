#include "bench/cOtherLine.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <string_view>

namespace {

// A sentence as a GPS receiver sends it.
constexpr std::string_view TEXT = "$GPGLL,4916.45,N,12311.12,W,225444,A,*1D\r\n";
constexpr int PERIOD = 45;  // milliseconds that 9600 bits/s take for it

}  // namespace

cOtherLine::cOtherLine(bool isBabbling) : child([this, isBabbling](int) { live(isBabbling); }) {
  pty.close();
}

void cOtherLine::live(bool isBabbling) {
  const int fd = pty.master.get();
  fcntl(fd, F_SETFL, O_NONBLOCK);  // when nobody reads, the text is lost
  char written[256];
  for (;;) {
    poll(nullptr, 0, PERIOD);
    while (read(fd, written, sizeof written) > 0) {
    }
    if (isBabbling) (void)!write(fd, TEXT.data(), TEXT.size());
  }
}
