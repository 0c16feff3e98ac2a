#include "fuzz/cMemoryPort.h"

#include <boost/chrono.hpp>

namespace {

// The base class needs a terminal; nothing is read from this one.
constexpr const char* SOME_TERMINAL = "/dev/ptmx";

}  // namespace

cMemoryPort::cMemoryPort(std::size_t piece)
    : kavTBX::basic_portbuf<char>(SOME_TERMINAL, boost::shared_ptr<kavTBX::cPortSetting>()),
      piece(piece) {}

void cMemoryPort::arrive(const std::string& bytes) {
  boost::mutex::scoped_lock lock(mutex);
  waiting += bytes;
  drained = false;
  changed.notify_all();
}

void cMemoryPort::waitUntilDrained() {
  boost::mutex::scoped_lock lock(mutex);
  while (!drained) changed.wait(lock);
}

// Returns characters unchanged, unlike the tty, where a byte 0xFF at the start of a read means end
// of file: the results must not depend on where the pieces are cut.
cMemoryPort::int_type cMemoryPort::underflow() {
  boost::mutex::scoped_lock lock(mutex);
  if (waiting.empty()) {
    drained = true;
    changed.notify_all();
    // A millisecond stands for the read time-out, so that a run takes no time.
    if (!isInterrupted()) changed.wait_for(lock, boost::chrono::milliseconds(1));
  }
  if (waiting.empty()) return traits_type::eof();
  current = waiting.substr(0, piece);
  waiting.erase(0, piece);
  setg(current.data(), current.data(), current.data() + current.size());
  return traits_type::to_int_type(current[0]);
}

std::streamsize cMemoryPort::xsputn(const char* s, std::streamsize n) {
  if (onWrite) onWrite(std::string(s, static_cast<std::size_t>(n)));
  return n;
}
