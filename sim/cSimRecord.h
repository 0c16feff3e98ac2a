#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// One record on its way to the host, and what happens with it.
struct cSimRecord {
  std::string bytes;                  ///< from the echo to the closing empty line; "": say nothing
  std::optional<std::uint32_t> scan;  ///< the number of the scan in it
  bool starts = false;                ///< the answer that begins a MD or MS
  bool running = false;               ///< a record of a running MD or MS
  bool cut = false;                   ///< a fault took its end away
  std::optional<int> newSpeed;        ///< the line speed from the moment that it is out
  std::optional<double> newRate;      ///< the turning rate from now on
};

/// The sensor's clock when it hears a command. Scan numbers are turns.
struct cSimMoment {
  std::uint32_t stamp = 0;     ///< milliseconds since power-on
  std::uint32_t lastScan = 0;  ///< the newest scan complete (GD, GS), and when it was
  std::uint32_t lastStamp = 0;
  std::uint32_t nextScan = 0;  ///< the next scan (SCIP 1.x G), and when it will be
  std::uint32_t nextStamp = 0;
};
