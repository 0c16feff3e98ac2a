#pragma once

#include <optional>
#include <string>

/// A MD or MS that is running.
struct cSimTask {
  std::string head;  ///< the command up to its count, which each record replaces
  std::string tail;  ///< ";" and the host string, if any
  int first = 0;
  int last = 0;
  int cluster = 1;
  int interval = 0;  ///< scans left out between two records
  int left = 0;      ///< records still to come
  bool endless = false;
  bool wide = false;  ///< three characters a reading (MD)
};

/// What a sensor remembers between commands, in either dialect. A fresh one is as after power-on.
struct cSimState {
  bool scip2 = true;
  bool laser = false;
  bool adjusting = false;
  bool sensitive = false;
  int slower = 0;  ///< motor speed level of CR, 0 is the model's own
  int speed = 0;   ///< line speed after the answers under way
  std::optional<cSimTask> task;
};
