#include "tarvolink/scip1/cSensorDriverSCIP1.h"

#include <cstdio>
#include <iostream>
#include <sstream>

#include "tarvolink/scip/cSCIPError.h"
#include "tarvolink/scip1/cSCIP12Adapter.h"
#include "tarvolink/scip1/geometry.h"

cSensorDriverSCIP1::cTurn::cTurn(const cSensorDriverSCIP1& givenDriver)
    : driver(givenDriver), isOutermost(driver.turnHolder != std::this_thread::get_id()) {
  if (!isOutermost) return;
  driver.link->mutex.lock();
  driver.turnHolder = std::this_thread::get_id();
}

cSensorDriverSCIP1::cTurn::~cTurn() {
  if (!isOutermost) return;
  driver.turnHolder = std::thread::id();
  driver.link->mutex.unlock();
}

cSensorDriverSCIP1::cSensorDriverSCIP1(boost::shared_ptr<cTarvoLink> givenLink)
    : cSensorDriver(givenLink) {
  scans.reset(new cLockableScanList);
  minSpot = 44;
  maxSpot = 724;
  frontSpot = SCIP1_FRONT_STEP;
  numSpot = SCIP1_STEPS_PER_TURN;
  minDist = 20;
  maxDist = 4095;
}

cSensorDriverSCIP1::~cSensorDriverSCIP1() {
  // A worker that reads a babbling line is to come back after the read under way.
  link->portbuf->interruptReads(true);
  adapter.reset();
  link->portbuf->interruptReads(false);
}

// --- commands --------------------------------------------------------------------------

int cSensorDriverSCIP1::doRaw(std::string cmd) {
  const cTurn turn(*this);
  const int error = link->doRaw1(cmd);
  if ((error & cSCIPError::ESTATUS_MASK) == 0) return 0;
  if ((error & cSCIPError::ESCIP1_STATUS) != 0) return error & ~cSCIPError::ESCIP1_STATUS;
  return -1;
}

int cSensorDriverSCIP1::doVersion() {
  const cTurn turn(*this);
  const int result = doRaw("V");
  if (result != 0) return result;
  std::istringstream lines(link->record.body);
  for (std::string line; std::getline(lines, line);) {
    const std::string key = line.substr(0, 4);
    const std::string value = line.substr(line.find(':') + 1);  // the whole line without one
    if (key == "VEND") vend = value;
    if (key == "PROD") prod = value;
    if (key == "FIRM") firm = value;
    if (key == "PROT") prot = value;
    if (key == "SERI") serial = value;
  }
  return 0;
}

int cSensorDriverSCIP1::doScan(int start, int end, int cluster) {
  char command[40];
  std::snprintf(command, sizeof command, "G%03d%03d%02d", start, end, cluster);
  int result = 0;
  boost::shared_ptr<cScan> scan;
  {
    const cTurn turn(*this);
    result = doRaw(command);
    if (result == 0) scan = decode(start, end, cluster);
  }
  publish(scan);
  return result;
}

int cSensorDriverSCIP1::doLaser(bool on) { return doRaw(on ? "L0" : "L1"); }

int cSensorDriverSCIP1::doSpeed(int baud) {
  char command[32];
  std::snprintf(command, sizeof command, "S%06d1234567", baud);
  const cTurn turn(*this);
  const int result = doRaw(command);
  if (result != 0) {
    link->portbuf->getSetting()->baudRate = baud;
    link->portbuf->termSetup(link->portbuf->getSetting());
  }
  return result;
}

// --- scans -----------------------------------------------------------------------------

boost::shared_ptr<cScan> cSensorDriverSCIP1::addScan(int start, int end, int cluster) {
  boost::shared_ptr<cScan> scan;
  {
    const cTurn turn(*this);
    scan = decode(start, end, cluster);
  }
  return publish(scan);
}

boost::shared_ptr<cScan> cSensorDriverSCIP1::decode(int start, int end, int cluster) {
  boost::shared_ptr<cScan> none;
  factory.scan.reset(new cScan(toDegrees(start) / DEGREES_PER_RADIAN,
                               toDegrees(end) / DEGREES_PER_RADIAN,
                               cluster * SCIP1_DEGREES_PER_STEP / DEGREES_PER_RADIAN));
  factory.scan->timeStamp = kavTBX::cTime(boost::posix_time::microsec_clock::local_time());
  std::istringstream lines(link->record.body);
  for (std::string line; std::getline(lines, line) && !line.empty();) {
    if (line.size() % 2 != 0) return none;
    factory.addData(decode6bit(line, 2));
  }
  const long long grouped = cluster == 0 ? 1 : cluster;
  const long long expected = (static_cast<long long>(end) - start) / grouped + 1;
  const auto points = static_cast<long long>(factory.scan->points.size());
  if (points == expected) return factory.scan;
  std::cerr << "comm error: mixed response? (ret: " << points << " expected:" << expected << ")"
            << std::endl;
  static_cast<void>(*none);  // ends the process: what follows would be another command's data
  return none;
}

boost::shared_ptr<cScan> cSensorDriverSCIP1::publish(boost::shared_ptr<cScan> scan) {
  if (scan) lockable::append(*scans, scan);
  return scan;
}

// --- faces -----------------------------------------------------------------------------

std::string cSensorDriverSCIP1::getStatus() const { return "Sensor works well."; }

const int& cSensorDriverSCIP1::getErr() const { return cSensorDriver::getErr(); }

std::string cSensorDriverSCIP1::getLastRawCommand() const {
  const cTurn turn(*this);
  return link->lastRawCommand;
}

std::string cSensorDriverSCIP1::getResponseBody() const {
  const cTurn turn(*this);
  return link->record.body;
}

iSCIP1IF* cSensorDriverSCIP1::getSCIP1IF() { return this; }

iSCIP2IF* cSensorDriverSCIP1::getSCIP2IF() {
  boost::mutex::scoped_lock lock(adapterMutex);
  std::cerr << "Creating SCIP2 Adapter\n";
  if (!adapter) {
    adapter.reset(new cSCIP12Adapter(this));
    std::cerr << "New SCIP2 Adapter created\n";
  }
  std::cerr << "New SCIP2 Adapter starting..\n";
  adapter->run();
  std::cerr << "New SCIP2 Adapter started\n";
  return adapter.get();
}
