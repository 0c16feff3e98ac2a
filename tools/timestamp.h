#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <string>

namespace tool {

/// A local time in ISO 8601 with microseconds and the zone's offset at that instant, such as
/// "2026-03-01T12:00:00.000250+01:00" (mktime(3) knows the offset). In the hour that is repeated
/// when summer time ends either offset may come.
std::string isoTimestamp(const boost::posix_time::ptime& local);

}  // namespace tool
