#include "bench/cDriverReader.h"

#include <stdexcept>

#include "bench/scanRecord.h"

boost::shared_ptr<cSensorDriver> createDriver(const std::string& path) {
  boost::shared_ptr<cSensorDriver> sensor = cSensorDriverManager::create(path);
  if (!sensor) throw std::runtime_error("the library found no sensor on " + path);
  return sensor;
}

void startEndlessScan(cSensorDriver& sensor) {
  const int result = sensor.getSCIP2IF()->startScan(sensor.getMinSpot(), sensor.getMaxSpot(), 1, 0,
                                                    0, sensor.getMaxDist());
  if (result < 0) throw std::runtime_error("the scan did not start");
}

boost::shared_ptr<cScan> takeScan(iSCIP2IF& scanner) {
  for (;;) {
    if (boost::shared_ptr<cScan> scan = scanner.getScanFirst()) return scan;
    if (!scanner.waitScan(iReader::TIMEOUT)) throw std::runtime_error("no scan arrived in time");
  }
}

cDriverReader::cDriverReader(const std::string& path) : sensor(createDriver(path)) {
  startEndlessScan(*sensor);
}

void cDriverReader::take() {
  const boost::shared_ptr<cScan> scan = takeScan(*sensor->getSCIP2IF());
  if (scan->points.size() != READINGS || scan->points.back().distance != distanceAt(LAST_STEP)) {
    throw std::runtime_error("a scan differs from the one sent");
  }
}
