#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <string>

/// One response of the sensor. A plain value: one caller at a time.
struct cSCIPRecord {
  int error = 0;        ///< 0 or a code word of `cSCIPError`
  std::string command;  ///< the command line as sent, without line end
  std::string status;   ///< the status line as received
  std::string echo;     ///< the echo line as received
  std::string body;     ///< the body lines, each followed by `cTarvoLink::REC_EOL`
  /// Local wall-clock time at which the echo line was read.
  boost::posix_time::ptime time{boost::gregorian::date(1970, 1, 1)};
};
