#include "bench/cAsioReaders.h"

#include <unistd.h>

#include <boost/asio/buffer.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/system/system_error.hpp>

#include "bench/cTty.h"

cAsioReader::cAsioReader(const std::string& path) : tty(context, dup(openRaw(path).get())) {
  writeScanCommand(tty.native_handle());
}

void cAsioReader::take() {
  const std::size_t size = awaitRecord();
  decodeScan(received.data(), size, distances);
  received.erase(0, size);
}

void cAsioReader::throwIfFailed(const boost::system::error_code& error) {
  if (error) throw boost::system::system_error(error, "reading with Asio");
}

cAsioSomeReader::cAsioSomeReader(const std::string& path) : cAsioReader(path) {
  read();
  takeAcknowledgement();
}

void cAsioSomeReader::read() {
  tty.async_read_some(boost::asio::buffer(buffer),
                      [this](const boost::system::error_code& error, std::size_t count) {
                        throwIfFailed(error);
                        received.append(buffer.data(), count);
                        read();
                      });
}

std::size_t cAsioSomeReader::awaitRecord() {
  for (std::size_t searched = 0;;) {
    const std::size_t end = received.find("\n\n", searched);
    if (end != std::string::npos) return end + 2;
    searched = received.empty() ? 0 : received.size() - 1;
    context.run_one();
  }
}

cAsioUntilReader::cAsioUntilReader(const std::string& path) : cAsioReader(path) {
  takeAcknowledgement();
}

std::size_t cAsioUntilReader::awaitRecord() {
  context.restart();  // it stops whenever it has no read to wait for
  std::size_t size = 0;
  boost::asio::async_read_until(
      tty, boost::asio::dynamic_buffer(received), "\n\n",
      [&size](const boost::system::error_code& error, std::size_t upToEnd) {
        throwIfFailed(error);
        size = upToEnd;
      });
  while (size == 0) context.run_one();
  return size;
}
