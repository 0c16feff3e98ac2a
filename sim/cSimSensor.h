#pragma once

#include <chrono>
#include <climits>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "sim/cSimSetting.h"
#include "sim/eSimFault.h"

/// What a simulated sensor has counted since it was constructed.
struct cSimCounters {
  std::uint64_t bytesReceived = 0;   ///< bytes read from the host, including garbled ones
  std::uint64_t bytesWritten = 0;    ///< bytes written to the host, including garbled ones
  std::uint64_t commands = 0;        ///< command lines received, blank ones not counted
  std::uint64_t records = 0;         ///< records completely written, including corrupted ones
  std::uint64_t scans = 0;           ///< scans among them that no fault cut short
  std::uint64_t skippedScans = 0;    ///< scans not sent: the line or the reader was too slow
  std::uint64_t droppedAnswers = 0;  ///< answers not sent: a stall, or more than 1 MiB in the queue
};

/// A sensor on a pseudo-terminal that a driver cannot tell from a real one. It answers from a
/// thread of its own from construction to destruction; one process can hold several.
///
/// Threads: any thread may call any operation, except that plug, unplug, clearFaults and the
/// destructor must not be called from cSimSetting::onCommand. The reference that getPath returns
/// is valid until the next plug().
class cSimSensor {
 public:
  /// Opens a pty (raw, no echo) and starts listening. Throws std::system_error when no pty is
  /// available, when the line speed, the rate or the command at start is invalid, or when the link
  /// cannot be created; nothing is left behind then.
  explicit cSimSensor(const cSimSetting& setting);
  ~cSimSensor();
  cSimSensor(const cSimSensor&) = delete;
  cSimSensor& operator=(const cSimSensor&) = delete;

  /// The slave's path, such as /dev/pts/7; the last one while unplugged.
  const std::string& getPath() const;
  /// The sensor's present line speed (SS and S change it); 0: any.
  int getSpeed() const;
  /// Whether an MD or MS is running.
  bool isScanning() const;
  cSimSetting getSetting() const;

  /// Stands for the fault's own default value (see simFaultTable).
  static constexpr int DEFAULT_VALUE = INT_MIN;
  /// Switches a fault on, or changes its arguments if it is on; takes effect with the next record.
  /// @param target  the records that it affects: "" all; "scan" those of a running MD or MS;
  ///                "answer" all others; anything else those that begin with it, such as "VV"
  /// @param times   it ends after affecting this many records; 0: it stays until it is cleared
  void setFault(eSimFault fault, int value = DEFAULT_VALUE, const std::string& target = "",
                int times = 0);
  void clearFault(eSimFault fault);
  /// Clears every fault; plugs an unplugged sensor in again.
  void clearFaults();

  /// Sends these bytes to the host between two records, unchanged (only timing faults apply).
  /// Does nothing while unplugged.
  void inject(const std::string& bytes);

  /// Pulls the cable: closes the master, so that the host reads end-of-file or EIO, and removes
  /// the link. Returns when that is done. Does nothing while unplugged.
  void unplug();
  /// Plugs the cable in again: a new pty (its path may differ), a new link to it, the sensor as
  /// after power-on (its scans start again at 1). Does nothing while plugged in. Throws like the
  /// constructor and then stays unplugged.
  void plug();

  /// What the sensor measures in that turn from step first to step last, 0 <= first <= last <
  /// steps per turn (otherwise std::out_of_range): millimetres, or error values (0-19; 1-5 on the
  /// long range model). With a cluster above 1, one value per group of steps; the last group may be
  /// partial. A group's value is its smallest valid reading, or its smallest error value if no
  /// reading is valid.
  /// @param maxReading  larger readings are reported as this: 4095 for MS, GS, two-character G
  std::vector<int> getTrueDistances(std::uint32_t scanNumber, int first, int last, int cluster,
                                    int maxReading = INT_MAX) const;

  /// The numbers of the scans completely written (MD, MS, GD, GS and G alike), oldest first; the
  /// newest 65536 of them. Scans that a fault cut short are not included. Scan n ends n turns after
  /// power-on, and its time stamp is that moment in milliseconds.
  std::vector<std::uint32_t> getSentScans() const;
  /// The command lines received, blank ones left out, oldest first; the newest 65536 of them.
  std::vector<std::string> getCommands() const;
  cSimCounters getCounters() const;

  using cTimeOut = std::chrono::milliseconds;
  /// Each of these waits until its condition holds or the time is over, and returns whether it
  /// holds. Counters count from construction: waitFor(&cSimCounters::skippedScans, 3,
  /// std::chrono::seconds(5)).
  bool waitFor(std::uint64_t cSimCounters::*counter, std::uint64_t count, cTimeOut timeOut) const;
  bool waitForSentScans(std::uint64_t count, cTimeOut timeOut) const {
    return waitFor(&cSimCounters::scans, count, timeOut);
  }
  /// Waits for `count` command lines that begin with prefix (among the newest 65536).
  bool waitForCommand(const std::string& prefix, cTimeOut timeOut, std::size_t count = 1) const;

 private:
  class cImpl;
  std::unique_ptr<cImpl> impl;
};
