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
/// It keeps the latest response in `record`. One caller at a time, since the link locks nothing
/// itself. A driver on the link does: under `mutex` any thread may read `record`. Reading a
/// response takes about 70 KB of the calling thread's stack.
class TARVOLINK_API cTarvoLink {
 public:
  static const std::string SEND_EOL;  ///< "\n", ends each command line
  static const std::string REC_EOL;   ///< "\n", ends each body line of a record

  /// A link over `portbuf`, which it keeps alive. Nothing is sent or read.
  explicit cTarvoLink(boost::shared_ptr<kavTBX::basic_portbuf<char>> portbuf);
  cTarvoLink(const cTarvoLink&) = delete;
  cTarvoLink& operator=(const cTarvoLink&) = delete;

  /// One SCIP 1.x exchange: sends `command` and receives the answer into `record`. The result
  /// refers to `record.error`: `ESCIP1_STATUS` with the sensor's digit if the echo is the command
  /// and the status one decimal digit; otherwise `EINVALID_ECHO` or `EINVALID_STATUS`, which also
  /// stand for a time-out and for interrupted reads. A time-out within the body is not reported.
  /// Each read blocks for up to the port's read time-out.
  const int& doRaw1(std::string command);

  /// Receives one response into `record`; `record.command` stays. True if it is complete. False:
  /// `record.error` names the part that did not come within the port's read time-out, or within
  /// the limits of 4096 characters a line and 65536 a response; the parts before it are kept.
  bool recvRecord();

  /// The same into `received`; leaves `record` alone.
  bool recvRecord(cSCIPRecord& received);

  boost::shared_ptr<kavTBX::basic_portbuf<char>> portbuf;    ///< the port
  boost::shared_ptr<kavTBX::basic_portstream<char>> stream;  ///< over `portbuf`
  cSCIPRecord record;                                        ///< the latest response
  std::string lastRawCommand;                                ///< the latest command of `doRaw1`
  bool isComplete = true;  ///< whether the latest `doRaw1` received a whole response
  boost::mutex mutex;      ///< guards `record` and `lastRawCommand` once a driver shares them
};
