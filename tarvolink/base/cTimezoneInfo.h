#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/thread/mutex.hpp>
#include <cstdint>

#include "tarvolink/base/cSingleton.h"
#include "tarvolink/export.h"

namespace kavTBX {

/// The process's time zone: its offset from UTC as it was on 1970-01-01 00:00:00 UTC.
///
/// That is deliberately not the offset in force today: a daylight-saving shift, or a zone
/// that was moved since, is not part of it. Made once per process, see `cTimezones`.
/// A plain value: any thread may read it.
class TARVOLINK_API cTimezoneInfo {
 public:
  /// Asks the system's zone (localtime_r) for that instant.
  cTimezoneInfo();

  std::int16_t utcOffsetHours;                 ///< whole hours, truncated toward zero
  boost::posix_time::time_duration utcOffset;  ///< local time minus UTC
};

/// The way to that one object: `cTimezones::instance()`. Any thread.
using cTimezones = cSingleton<cTimezoneInfo, LazyInstantiation, boost::mutex>;

// One object per process: the host uses the library's, it does not make its own.
extern template class TARVOLINK_API cSingleton<cTimezoneInfo, LazyInstantiation, boost::mutex>;

}  // namespace kavTBX
