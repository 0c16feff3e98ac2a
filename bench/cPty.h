#pragma once

#include <string>

#include "bench/cDescriptor.h"

/// A pseudo-terminal for the sensors' side.
struct cPty {
  /// Opens both ends; raw and without echo from the start: an echo would send the sensor its own
  /// answers. Throws std::system_error when none is available.
  cPty();

  /// Leaves both ends to the child that has copies of them.
  void close();

  cDescriptor master;
  std::string path;
  cDescriptor slave;  ///< keeps the line up while no reader has it open
};
