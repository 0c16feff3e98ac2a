#pragma once

#include <chrono>
#include <climits>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "sim/cSimSetting.h"
#include "sim/eSimFault.h"

/// What a simulated sensor has counted since it was made.
struct cSimCounters {
  std::uint64_t bytesHeard = 0;      ///< bytes taken from the host, garbled ones too
  std::uint64_t bytesWritten = 0;    ///< bytes given to the host, garbled ones too
  std::uint64_t commands = 0;        ///< command lines heard that were not blank
  std::uint64_t records = 0;         ///< records completely written, damaged ones too
  std::uint64_t scans = 0;           ///< scans among them that were not cut short
  std::uint64_t skippedScans = 0;    ///< scans skipped: the line or the reader was too slow
  std::uint64_t droppedAnswers = 0;  ///< answers dropped: a stall, or over 1 MiB waiting to leave
};

/// A sensor on a pseudo-terminal that a driver cannot tell from a real one. It answers from a
/// thread of its own from construction to destruction; several live in one process.
///
/// Threads: any thread may call any operation, except that plug, unplug, clearFaults and the
/// destructor must not be called from cSimSetting::onCommand, and the reference that getPath
/// returns is good until the next plug().
class cSimSensor {
 public:
  /// Opens a pty (raw, no echo) and begins to listen. Throws std::system_error when no pty is to
  /// be had, the line speed, rate or left command is impossible, or the link cannot be made;
  /// nothing is left behind then.
  explicit cSimSensor(const cSimSetting& setting);
  ~cSimSensor();
  cSimSensor(const cSimSensor&) = delete;
  cSimSensor& operator=(const cSimSensor&) = delete;

  /// The slave's path, such as /dev/pts/7; the last one while unplugged.
  const std::string& getPath() const;
  /// The line speed that the sensor is at now (SS and S change it); 0: any.
  int getSpeed() const;
  /// Whether a MD or MS is running.
  bool isScanning() const;
  cSimSetting getSetting() const;

  /// The fault's own default value (see simFaultTable).
  static constexpr int DEFAULT_VALUE = INT_MIN;
  /// Switches a fault on, or on again with other arguments; it holds from the next record.
  /// @param only  which records it harms: "" all; "scan" those of a running MD or MS; "answer"
  ///              all others; anything else those whose bytes begin with it, such as "VV"
  /// @param times it ends after harming so many records; 0: it holds until it is cleared
  void setFault(eSimFault fault, int value = DEFAULT_VALUE, const std::string& only = "",
                int times = 0);
  void clearFault(eSimFault fault);
  /// Clears every fault; a sensor that was unplugged is plugged in again.
  void clearFaults();

  /// Says these bytes to the host between two records, as they are (only timing faults touch them).
  void say(const std::string& bytes);

  /// Pulls the cable: the master closes, the host reads end-of-file or EIO, the link goes. Returns
  /// when it is done. Nothing happens when unplugged already.
  void unplug();
  /// Plugs the cable in again: a new pty (its path may differ), the link on it, the sensor as after
  /// power-on (the world goes on from scan 1). Nothing happens when plugged in. Throws like the
  /// constructor, and stays unplugged then.
  void plug();

  /// What the sensor measures in that turn, from step first to step last, 0 <= first <= last <
  /// steps per turn (else std::out_of_range): millimetres, or error values (0-19; 1-5 on the long
  /// range model). With a cluster above 1 one value for each group, the last one maybe partial: the
  /// smallest valid reading, or the smallest error value where none is valid.
  /// @param most  readings above it say it: 4095 for MS, GS and the two-character G
  std::vector<int> getTrueDistances(std::uint32_t scanNumber, int first, int last, int cluster,
                                    int most = INT_MAX) const;

  /// The numbers of the scans completely written (MD, MS, GD, GS and G alike), oldest first; the
  /// newest 65536 of them. Scans cut short by a fault are not in it. Number n ends n turns after
  /// power-on, and its time stamp says so in milliseconds.
  std::vector<std::uint32_t> getSentScans() const;
  /// The command lines heard that were not blank, oldest first; the newest 65536 of them.
  std::vector<std::string> getCommands() const;
  cSimCounters getCounters() const;

  using cTimeOut = std::chrono::milliseconds;
  /// Each waits until its condition holds, at most so long; returns whether it holds. The counters
  /// run from the sensor's making: waitFor(&cSimCounters::skippedScans, 3,
  /// std::chrono::seconds(5)).
  bool waitFor(std::uint64_t cSimCounters::*counter, std::uint64_t count, cTimeOut timeOut) const;
  bool waitForSentScans(std::uint64_t count, cTimeOut timeOut) const {
    return waitFor(&cSimCounters::scans, count, timeOut);
  }
  /// A command line that begins with prefix was heard `count` times (among the newest 65536).
  bool waitForCommand(const std::string& prefix, cTimeOut timeOut, std::size_t count = 1) const;

 private:
  class cBody;
  std::unique_ptr<cBody> body;
};
