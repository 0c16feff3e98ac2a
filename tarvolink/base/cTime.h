#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include "tarvolink/export.h"

namespace kavTBX {

/// A local wall-clock time with microseconds. A plain value: one caller at a time.
class TARVOLINK_API cTime {
 public:
  /// 1970-01-01 00:00:00.
  cTime();

  /// `time`, local.
  explicit cTime(const boost::posix_time::ptime& time);

  boost::posix_time::ptime time;  ///< local time (gettimeofday split by localtime_r)
};

}  // namespace kavTBX
