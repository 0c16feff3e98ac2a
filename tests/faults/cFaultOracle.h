#pragma once

#include "tests/support/driving.h"

// What every fault test asks for, and the waits that its calls may take, in milliseconds.
constexpr int FIRST = 44;
constexpr int LAST = 143;
constexpr std::size_t POINTS = LAST - FIRST + 1;
constexpr int FAR = 5600;     // asks for three characters a reading
constexpr int NEAR = 4095;    // for two
constexpr int READ = 300;     // a read under way, before a command's line is written
constexpr int ANSWER = 2000;  // an answer of SCIP 2.0

// A sanitizer takes more CPU, and has an allocator of its own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool IS_SANITIZED = true;
#else
constexpr bool IS_SANITIZED = false;
#endif

/// What holds whatever the far end of a cable does: no crash, no call that hangs or is late, no
/// scan that differs from the truth where sums, lengths or the number of points tell it, hardly any
/// CPU while the fault lasts, nothing left behind. Make it when the sensor is there and the driver
/// is not; the driver goes first.
class cFaultOracle {
 public:
  /// @param sensed  the sensor whose scans are judged
  explicit cFaultOracle(const cSimSensor& sensed);
  /// The end: no more descriptors, threads and memory than at the start.
  ~cFaultOracle();

  /// `action` ends within so many milliseconds (and 100, and what this process waited for a
  /// processor), and all threads, the sensor's too, use less than 5 % of a core meanwhile.
  void during(const char* what, int milliseconds, const std::function<void()>& action);

  /// Whether a scan is one that was sent after those judged before. Counted as true, as told (its
  /// number of points gives it away), or as a lie.
  /// @param patience  milliseconds; the host has a scan a moment before it is noted as sent
  bool judge(const std::vector<int>& distances, int patience = LONG);
  /// Takes and judges what scans there are.
  void take(iSCIP2IF& driver, int patience = LONG);
  /// Does it; that it throws tells damage.
  void tryTo(const std::function<void()>& action);
  /// Takes and judges scans until the condition holds.
  void follow(iSCIP2IF& driver, const std::function<bool()>& condition);
  /// The next scan that comes is true, or one of the few after it.
  void expectTrueScan(iSCIP2IF& driver);

  int truths = 0;
  int told = 0;
  int lies = 0;

 private:
  const cSimSensor& sensor;
  const long descriptors;
  const int threads;
  const std::size_t memory;
  std::size_t next = 0;  // the first scan sent that may still come
};

/// Bytes allocated in this process; 0 under a sanitizer, which has an allocator of its own.
std::size_t countAllocated();
