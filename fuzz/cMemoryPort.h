#pragma once

#include <boost/chrono.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/thread/condition.hpp>
#include <boost/thread/mutex.hpp>
#include <cstddef>
#include <functional>
#include <string>

#include "tarvolink/port/basic_portbuf.h"

/// A port whose far end is a string: reads return pieces of a given size, and what the host writes
/// goes to a callback, which may answer. The library reads it by its own functions.
class cMemoryPort : public kavTBX::basic_portbuf<char> {
 public:
  /// @param piece  characters that a read returns, at most
  explicit cMemoryPort(std::size_t piece)
      : kavTBX::basic_portbuf<char>(SOME_TERMINAL, {}), piece(piece) {}

  /// Makes `bytes` arrive. Any thread.
  void arrive(const std::string& bytes) {
    boost::mutex::scoped_lock lock(mutex);
    waiting += bytes;
    drained = false;
    changed.notify_all();
  }

  /// Waits until a reader has read all that arrived and has tried to read more. Any thread.
  void waitUntilDrained() {
    boost::mutex::scoped_lock lock(mutex);
    while (!drained) changed.wait(lock);
  }

  /// Called with each line that the host writes, in the thread that writes it.
  std::function<void(const std::string&)> onWrite;

 protected:
  // Returns characters unchanged, unlike the tty, where a byte 0xFF at the start of a read means
  // end of file: the results must not depend on where the pieces are cut.
  int_type underflow() override {
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

  std::streamsize xsputn(const char* s, std::streamsize n) override {
    if (onWrite) onWrite(std::string(s, static_cast<std::size_t>(n)));
    return n;
  }

 private:
  // The base class needs a terminal; nothing is read from this one.
  static constexpr const char* SOME_TERMINAL = "/dev/ptmx";

  const std::size_t piece;
  std::string current;  // holds the get area; reader only
  boost::mutex mutex;
  boost::condition changed;
  std::string waiting;   // under mutex
  bool drained = false;  // under mutex
};
