#pragma once

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/cSimHost.h"
#include "tarvolink/tarvolink.h"

/// What some time of scanning cost.
struct cUsage {
  double wall = 0;              ///< seconds, the window in which CPU time was counted
  double cpu = 0;               ///< seconds in that window
  std::uint64_t scans = 0;      ///< delivered in that window
  std::uint64_t delivered = 0;  ///< delivered from start to stop
  std::uint64_t missing = 0;    ///< turns that a scanner's numbers show to be lost
  double cpuPerScan() const { return cpu / static_cast<double>(scans); }
};

/// Takes the scans of many sensors, each in a thread of its own. What one of them fails at is
/// thrown.
class cFleet {
 public:
  virtual ~cFleet() = default;

  /// Scans for `seconds` with the first `count` sensors, counted once all of them scan.
  cUsage scan(std::size_t count, double seconds);

 protected:
  /// Scans with sensor `index` until isStopping(), and counts.
  virtual void takeAll(std::size_t index) = 0;

  void countScan() { ++delivered; }
  void countStart() { ++started; }
  void countMissing(std::uint64_t count) { missing += count; }
  bool isStopping() const { return stopping; }

 private:
  cUsage watch(double seconds) const;

  std::atomic<bool> stopping{false};
  std::atomic<std::size_t> started{0};
  std::atomic<std::uint64_t> delivered{0};
  std::atomic<std::uint64_t> missing{0};
};

/// A driver for each of a host's sensors.
class cDriverFleet : public cFleet {
 public:
  explicit cDriverFleet(const cSimHost& host);

 protected:
  void takeAll(std::size_t index) override;

 private:
  std::vector<boost::shared_ptr<cSensorDriver>> drivers;
};

/// A scanner for each of them while it is needed.
class cScannerFleet : public cFleet {
 public:
  explicit cScannerFleet(const cSimHost& host) : paths(host.getPaths()) {}

 protected:
  void takeAll(std::size_t index) override;

 private:
  const std::vector<std::string> paths;
};
