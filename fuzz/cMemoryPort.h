#pragma once

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
  explicit cMemoryPort(std::size_t piece);

  /// Makes `bytes` arrive. Any thread.
  void arrive(const std::string& bytes);

  /// Waits until a reader has read all that arrived and has tried to read more. Any thread.
  void waitUntilDrained();

  /// Called with each line that the host writes, in the thread that writes it.
  std::function<void(const std::string&)> onWrite;

 protected:
  int_type underflow() override;
  std::streamsize xsputn(const char* s, std::streamsize n) override;

 private:
  const std::size_t piece;
  std::string current;  // holds the get area; reader only
  boost::mutex mutex;
  boost::condition changed;
  std::string waiting;   // under mutex
  bool drained = false;  // under mutex
};
