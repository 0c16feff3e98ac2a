#include "tarvolink/base/cTime.h"

namespace kavTBX {

cTime::cTime() : time(boost::gregorian::date(1970, 1, 1)) {}

cTime::cTime(const boost::posix_time::ptime& time) : time(time) {}

}  // namespace kavTBX
