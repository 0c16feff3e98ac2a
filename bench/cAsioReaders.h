#pragma once

#include <array>
#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <string>
#include <vector>

#include "bench/iReader.h"

/// What both Boost.Asio readers share: the tty and plain decoding.
class cAsioReader : public iReader {
 public:
  void take() override;

 protected:
  /// Opens the tty and requests scans; the derived reader then takes the acknowledgement.
  explicit cAsioReader(const std::string& path);
  /// Runs the handlers until `received` begins with a whole record; returns its size.
  virtual std::size_t awaitRecord() = 0;
  void takeAcknowledgement() { received.erase(0, awaitRecord()); }
  /// Throws std::system_error if a handler was called with an error.
  static void throwIfFailed(const boost::system::error_code& error);

  boost::asio::io_context context;
  boost::asio::posix::stream_descriptor tty;
  std::string received;

 private:
  std::vector<int> distances;
};

/// async_read_some of 12 bytes at a time.
class cAsioSomeReader : public cAsioReader {
 public:
  explicit cAsioSomeReader(const std::string& path);

 private:
  std::size_t awaitRecord() override;
  void read();

  std::array<char, 12> buffer;
};

/// async_read_until the empty line, into a growing string: Asio chooses the size of its reads.
class cAsioUntilReader : public cAsioReader {
 public:
  explicit cAsioUntilReader(const std::string& path);

 private:
  std::size_t awaitRecord() override;
};
