#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvoscan/scanner/cScanSession.h"
#include "tarvoscan/search/cSensorFinder.h"

namespace tarvo {

/// What the reading thread does from start to stop: open, find, scan, wait, and again.
class cScannerThread {
 public:
  explicit cScannerThread(cScannerParts& parts);

  /// Returns when the end was asked for, or when the sensor is lost and is not to come back.
  void run();

 private:
  cProblem connect();
  cProblem connectTo(const std::string& device);
  cProblem openDevice(const std::string& device);
  bool find();
  cProblem takeOver(cSensorInfo& sensor);
  cProblem checkSerial(const cSensorInfo& sensor) const;
  cProblem raiseSpeed(cSensorInfo& sensor, cSensorFinder& finder);
  cProblem compareWithLast(const cSensorInfo& sensor) const;
  void wait(const cProblem& problem);
  void close();
  std::vector<int> getSpeeds() const;

  cScannerParts& parts;
  const std::vector<std::string> devices;
  boost::shared_ptr<cScanPort> port;              // empty: none is open
  std::unique_ptr<cConversation> talk;            // over it
  std::unique_ptr<cSensorFinder> finder;          // over that
  std::shared_ptr<const cSensorInfo> lastSensor;  // empty: none was found yet
  std::vector<int> lastSpeeds;  // at which it answered last, and before it was raised
  unsigned looks = 0;           // since it is looked for again
  bool hasSearched = false;     // a whole search of the open port found nothing
};

}  // namespace tarvo
