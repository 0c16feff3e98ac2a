#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// One record on its way to the host, and what comes with it.
struct cSimRecord {
  std::string bytes;                  ///< from the echo to the closing empty line; "": no answer
  std::optional<std::uint32_t> scan;  ///< the number of the scan in it
  bool starts = false;                ///< the answer that starts an MD or MS
  bool running = false;               ///< a scan of a running MD or MS
  bool cut = false;                   ///< a fault removed its end
  std::optional<int> newSpeed;        ///< the line speed once it has been sent
  std::optional<double> newRate;      ///< the turning rate, at once
};

/// The sensor's clock when it receives a command. Scan numbers are turns.
struct cSimClock {
  std::uint32_t stamp = 0;      ///< milliseconds since power-on
  std::uint32_t lastScan = 0;   ///< the newest complete scan (GD, GS)
  std::uint32_t lastStamp = 0;  ///< milliseconds from power-on to its end
  std::uint32_t nextScan = 0;   ///< the next scan (SCIP 1.x G)
};
