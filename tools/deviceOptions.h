#pragma once

#include <CLI/CLI.hpp>

#include "tools/cDeviceName.h"

namespace tool {

/// Declares the options that say where the sensor is.
inline void addDeviceOptions(CLI::App& command, cDeviceWish& wish) {
  command
      .add_option("DEVICE", wish.device,
                  "A tty, or sim:[short|middle|long][,DIALECT] for a simulated sensor (default: "
                  "the only serial device of this machine, or sim: where there is none)")
      ->type_name("")
      ->check([](const std::string& given) {
        return given.empty() ? "is empty: name a device, or leave it out" : std::string();
      });
  command
      .add_option("--speed", wish.speed, "Look for the sensor at this line speed alone, in bits/s")
      ->check(CLI::IsMember({9600, 19200, 38400, 57600, 115200, 230400, 460800, 500000}));
}

}  // namespace tool
