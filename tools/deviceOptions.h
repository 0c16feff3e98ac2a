#pragma once

#include <CLI/CLI.hpp>

#include "tools/cDeviceName.h"
#include "tools/number.h"

namespace tool {

/// Refuses an empty word, as an unset variable of a shell gives it.
inline CLI::Validator notEmpty(const std::string& hint) {
  return CLI::Validator(
      [hint](std::string& word) { return word.empty() ? "is empty: " + hint : std::string(); }, "");
}

/// Declares the options that say where the sensor is.
inline void addDeviceOptions(CLI::App& command, cDeviceOptions& options) {
  command
      .add_option("DEVICE", options.device,
                  "A tty, or sim:[short|middle|long][,DIALECT] for a simulated sensor (default: "
                  "the only serial device of this machine)")
      ->type_name("")
      ->check(notEmpty("name a device, or leave it out"));
  const auto speeds = CLI::IsMember({9600, 19200, 38400, 57600, 115200, 230400, 460800, 500000});
  requireNumber<int>(command.add_option("--speed", options.speed,
                                        "Look for the sensor at this line speed alone, in bits/s"))
      ->check(speeds);
}

}  // namespace tool
