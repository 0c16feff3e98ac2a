#pragma once

#include <optional>
#include <string>

/// An MD or MS that is running.
struct cSimTask {
  std::string head;  ///< the command up to its count, which each record replaces
  std::string tail;  ///< ";" and the host string, if any
  int first = 0;
  int last = 0;
  int cluster = 1;
  int interval = 0;   ///< scans left out between two records
  int remaining = 0;  ///< records still to come
  bool endless = false;
  bool wide = false;  ///< three characters a reading (MD), not two (MS)
};

/// What a sensor remembers between commands, in either dialect. A new one is as after power-on.
struct cSimState {
  bool scip2 = true;  ///< speaks SCIP 2.0, not 1.x
  bool laser = false;
  bool adjusting = false;  ///< in adjust mode (TM0)
  bool sensitive = false;  ///< high sensitivity (HS1)
  int slowdown = 0;        ///< CR: percent below the sensor's own turning rate
  int speed = 0;           ///< line speed once the queued answers have been sent
  std::optional<cSimTask> task;
};
