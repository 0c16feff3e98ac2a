#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace tarvo {

/// Bytes that passed over a line, as one write(2) or read(2) had them. Valid while it is reported.
struct cLineEvent {
  const std::string& device;  ///< the port's path
  int lineSpeed;              ///< bits per second
  bool isSent;                ///< by the host; otherwise received
  std::int64_t monotonic;     ///< when: CLOCK_MONOTONIC, nanoseconds
  std::string_view bytes;     ///< as they were
};

/// Called with each of them, in the thread that reads the port. It must return soon and throw
/// nothing.
using tLineTap = std::function<void(const cLineEvent&)>;

}  // namespace tarvo
