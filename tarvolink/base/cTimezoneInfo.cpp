#include "tarvolink/base/cTimezoneInfo.h"

#include <boost/date_time/c_local_time_adjustor.hpp>

namespace kavTBX {

using boost::posix_time::ptime;

cTimezoneInfo::cTimezoneInfo() {
  const ptime epoch(boost::gregorian::date(1970, 1, 1));
  utcOffset = boost::date_time::c_local_adjustor<ptime>::utc_to_local(epoch) - epoch;
  constexpr std::int64_t MICROSECONDS_PER_HOUR = 3600000000;
  utcOffsetHours =
      static_cast<std::int16_t>(utcOffset.total_microseconds() / MICROSECONDS_PER_HOUR);
}

template class cSingleton<cTimezoneInfo, LazyInstantiation, boost::mutex>;

}  // namespace kavTBX
