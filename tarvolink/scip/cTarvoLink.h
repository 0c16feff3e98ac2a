#pragma once

#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <string>

#include "tarvolink/export.h"
#include "tarvolink/port/basic_portbuf.h"
#include "tarvolink/port/basic_portstream.h"
#include "tarvolink/scip/cSCIPRecord.h"

/// The line transport: writes one command line, reads one response.
///
/// It keeps the latest response in `record`. One caller at a time talks through a link; the
/// link locks nothing itself. The drivers do, once they are made: under `mutex` any thread may
/// read `record`. A response is read with about 70 KB of the calling thread's stack.
class TARVOLINK_API cTarvoLink {
 public:
  static const std::string SEND_EOL;  ///< "\n", ends each command line
  static const std::string REC_EOL;   ///< "\n", ends each body line of a record

  /// A link over `portbuf`, which it keeps alive. Nothing is sent or read.
  explicit cTarvoLink(boost::shared_ptr<kavTBX::basic_portbuf<char>> portbuf);
  cTarvoLink(const cTarvoLink&) = delete;
  cTarvoLink& operator=(const cTarvoLink&) = delete;

  /// One SCIP 1.x exchange: sends `command` and receives the answer into `record`. The
  /// result refers to `record.error`: `ESCIP1_STATUS` with the sensor's digit when the
  /// echo is the command and the status one decimal digit, else `EINVALID_ECHO` or
  /// `EINVALID_STATUS`, which also stand for a time-out and for interrupted reads; a time-out
  /// within the body is not told.
  /// Blocks for the port's read time-out a read.
  const int& doRaw1(std::string command);

  /// Receives one response into `record`; `record.command` stays. True when it is complete.
  /// False: `record.error` tells what did not come within the port's read time-out, or
  /// within a line of 4096 and a response of 65536 characters; what came before it is kept.
  bool recvRecord();

  /// The same into `received` instead, leaving `record` alone.
  bool recvRecord(cSCIPRecord& received);

  boost::shared_ptr<kavTBX::basic_portbuf<char>> portbuf;    ///< the port
  boost::shared_ptr<kavTBX::basic_portstream<char>> stream;  ///< over `portbuf`
  cSCIPRecord record;                                        ///< the latest response
  std::string lastRawCommand;                                ///< the latest command of `doRaw1`
  boost::mutex mutex;  ///< for `record` and `lastRawCommand` between threads
};
