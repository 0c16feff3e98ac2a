#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "bench/iReader.h"
#include "tarvolink/tarvolink.h"

/// The whole library, as a host program uses it: create, startScan, waitScan, getScanFirst.
class cDriverReader : public iReader {
 public:
  explicit cDriverReader(const std::string& path);
  void take() override;

 private:
  boost::shared_ptr<cSensorDriver> sensor;
};

/// The driver of the sensor on `path`. Throws std::runtime_error if no sensor is found.
boost::shared_ptr<cSensorDriver> createDriver(const std::string& path);

/// Starts the endless scan of the whole range. Throws std::runtime_error if it is refused.
void startEndlessScan(cSensorDriver& sensor);

/// Waits for the next scan. Throws std::runtime_error if none arrives within iReader::TIMEOUT.
boost::shared_ptr<cScan> takeScan(iSCIP2IF& scanner);
