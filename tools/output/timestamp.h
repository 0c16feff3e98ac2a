#pragma once

#include <cstdint>
#include <string>

namespace tool {

/// A moment in nanoseconds since 1970-01-01 UTC as local time in ISO 8601 with microseconds and the
/// zone's offset at that instant (localtime_r(3)), such as "2026-03-01T12:00:00.000250+01:00".
std::string isoTimestamp(std::int64_t utc);

}  // namespace tool
