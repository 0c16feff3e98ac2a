#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/thread/mutex.hpp>
#include <cstdint>

#include "tarvolink/base/cSingleton.h"
#include "tarvolink/export.h"

namespace kavTBX {

/// The process's time zone: its offset from UTC as it was on 1970-01-01 00:00:00 UTC.
///
/// This is deliberately not today's offset: it includes no daylight-saving shift and no later
/// change of the zone. Made once per process, see `cTimezones`. A plain value: any thread may
/// read it.
class TARVOLINK_API cTimezoneInfo {
 public:
  /// Reads the system's zone at that instant (localtime_r).
  cTimezoneInfo();

  std::int16_t utcOffsetHours;                 ///< whole hours, truncated toward zero
  boost::posix_time::time_duration utcOffset;  ///< local time minus UTC
};

/// Gives access to the one object: `cTimezones::instance()`. Any thread.
using cTimezones = cSingleton<cTimezoneInfo, LazyInstantiation, boost::mutex>;

// One object per process: without this a host would instantiate a second one.
extern template class TARVOLINK_API cSingleton<cTimezoneInfo, LazyInstantiation, boost::mutex>;

}  // namespace kavTBX
