#pragma once

#include <string>
#include <vector>

namespace tool {

/// ": did you mean "scan"?" for the one of `names` that `word` was probably meant to be; "" where
/// none is near.
std::string suggestion(const std::string& word, const std::vector<std::string>& names);

}  // namespace tool
