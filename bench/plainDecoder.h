#pragma once

#include <cstddef>
#include <vector>

/// What a user would write without the library; the yardstick for the library's own decoding. Finds
/// the line ends, checks each line's sum, decodes three characters a reading into `distances`
/// (cleared first). Makes no points and no angles, and keeps no record.
///
/// `record` has `size` bytes, including its closing empty line. Throws std::runtime_error for a
/// wrong sum or a missing line end. An acknowledgement has no distances.
void decodePlainly(const char* record, std::size_t size, std::vector<int>& distances);
