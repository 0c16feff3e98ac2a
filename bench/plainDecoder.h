#pragma once

#include <cstddef>
#include <vector>

/// What a user would write without the library, and what the library's own decoding is measured
/// against: finds the line ends, tests each line's sum, decodes three characters a reading into
/// `distances` (emptied first). No points, no angles, no record kept.
///
/// `record` has `size` bytes up to and with its closing empty line. Throws std::runtime_error for a
/// bad sum or a missing line end. An acknowledgement gives no distances.
void decodePlainly(const char* record, std::size_t size, std::vector<int>& distances);
