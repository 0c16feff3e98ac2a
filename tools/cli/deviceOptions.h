#pragma once

#include <CLI/CLI.hpp>

#include "tools/base/messages.h"
#include "tools/cli/cDevice.h"
#include "tools/cli/number.h"

namespace tool {

/// Refuses an empty word, as an unset variable of a shell gives it.
inline CLI::Validator notEmpty(const std::string& hint) {
  return CLI::Validator(
      [hint](std::string& word) { return word.empty() ? "is empty: " + hint : std::string(); }, "");
}

/// Declares `-q` and `-v`.
inline void addVerbosityOptions(CLI::App& command) {
  const auto chosen = [](eVerbosity level) { return [level](std::int64_t) { verbosity = level; }; };
  auto* const quiet = command.add_flag_function("-q,--quiet", chosen(eVerbosity::ERRORS),
                                                "Say nothing but why it fails");
  command
      .add_flag_function("-v,--verbose", chosen(eVerbosity::DETAILS),
                         "Print what is sent and received, and how well it goes")
      ->excludes(quiet);
}

/// Declares the options that say where the sensor is.
inline void addDeviceOptions(CLI::App& command, cDeviceOptions& options) {
  const auto speeds = CLI::IsMember({9600, 19200, 38400, 57600, 115200, 230400, 460800, 500000});
  command
      .add_option("DEVICE", options.device,
                  "A tty, or sim:[short|middle|long][,DIALECT] for a simulated sensor (default: "
                  "the only serial device of this machine)")
      ->type_name("")
      ->check(notEmpty("name a device, or leave it out"));
  command
      .add_option("--serial", options.serial,
                  "The serial number that the sensor must have; without DEVICE it is looked for on "
                  "all serial devices that are free")
      ->type_name("NUMBER")
      ->check(notEmpty("give a serial number, or leave the option out"));
  command.add_flag("--wait", options.isWaiting,
                   "Wait for a device or a sensor that is not there yet");
  requireNumber<int>(command.add_option("--speed", options.speed,
                                        "Look for the sensor at this line speed alone, in bits/s"))
      ->check(speeds);
  requireNumber<int>(
      command.add_option("--raise-speed", options.raisedSpeed,
                         "Raise the line speed to this once the sensor is found, in bits/s; it "
                         "stays until the sensor is switched off"))
      ->check(CLI::IsMember({19200, 57600, 115200, 500000}));  // at which it is found again
  addFaultOptions(command, options.faults, "a simulated DEVICE");
  addVerbosityOptions(command);
}

}  // namespace tool
