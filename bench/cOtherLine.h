#pragma once

#include <string>

#include "bench/cChild.h"
#include "bench/cPty.h"

/// A line without a sensor: what is written to it is forgotten. It is silent, or some other device
/// talks all the time, in lines of text at some 9600 bits/s. A process of its own, until the
/// destructor.
class cOtherLine {
 public:
  explicit cOtherLine(bool isBabbling);

  /// The pty to open.
  const std::string& getPath() const { return pty.path; }

 private:
  [[noreturn]] void live(bool isBabbling);

  cPty pty;  // open in the child only
  cChild child;
};
