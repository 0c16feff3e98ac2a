#include "tarvolink/driver/cSensorDriverManager.h"

#include <boost/thread/exceptions.hpp>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <vector>

#include "tarvolink/scip/cSCIPError.h"
#include "tarvolink/scip1/cSensorDriverSCIP1.h"
#include "tarvolink/scip2/cSensorDriverSCIP2.h"

namespace {

using tDriver = boost::shared_ptr<cSensorDriver>;
using tLink = boost::shared_ptr<cTarvoLink>;
using tProbe = std::unique_ptr<cSensorDriverSCIP2>;

bool isRefused(int error) { return (error & cSCIPError::ESTATUS_MASK) != 0; }

/// A fetch whose failure does not matter here: "TM2" decides, and the host can fetch again.
template <typename Fetch>
void fetchTolerantly(Fetch fetch) {
  try {
    fetch();
  } catch (const std::out_of_range&) {
    // A line too short to hold a value, with a correct checksum: as good as no answer.
  }
}

/// The probe of a sensor that was switched to SCIP 2.0 lives on, asleep, until the process ends. It
/// gives up the link, or the name of an unplugged device would stay taken. The registry is never
/// destroyed, because the probes' threads still sleep when static objects are.
void park(tProbe probe) {
  static auto& mutex = *new boost::mutex;
  static auto& asleep = *new std::vector<tProbe>;
  probe->releaseLink();
  boost::mutex::scoped_lock guard(mutex);
  asleep.push_back(std::move(probe));
}

/// The sensor refuses "TM2" in its present state. Once reset it is taken as it is, without "PP".
tDriver resetProbe(tProbe probe) {
  if (isRefused(probe->doRaw2("\nRS", 1)->error)) return tDriver();
  return tDriver(probe.release());
}

tDriver activate(tProbe probe) {
  fetchTolerantly([&probe] { probe->fetchParameters(); });
  std::cerr << (probe->isActivated() ? "driver is activated" : "driver is not activated")
            << std::endl;
  return tDriver(probe.release());
}

tDriver makeSwitchedDriver(const tLink& link) {
  boost::shared_ptr<cSensorDriverSCIP2> driver(new cSensorDriverSCIP2(link));
  driver->start();
  fetchTolerantly([&driver] { driver->fetchParameters(); });
  return driver;
}

/// The sensor did not answer in SCIP 2.0: asks in SCIP 1.x, on the link itself. The probe's thread
/// sleeps first, since two readers would split the answers between them.
tDriver detectScip1(const tLink& link, tProbe probe) {
  probe->suspend();
  if (isRefused(link->doRaw1("V"))) return tDriver();
  if (isRefused(link->doRaw1("SCIP2.0"))) return tDriver(new cSensorDriverSCIP1(link));
  park(std::move(probe));
  return makeSwitchedDriver(link);
}

tDriver detect(const tLink& link) {
  link->recvRecord();  // an answer to an earlier program, or what opening the port made of the line
  tProbe probe(new cSensorDriverSCIP2(link));
  probe->start();
  fetchTolerantly([&probe] { probe->fetchVersionStr(); });
  // The line feeds end whatever the sensor has taken for the beginning of a command so far.
  const boost::shared_ptr<cSCIPRecord> answer = probe->doRaw2("\n\nTM2", 1);
  if (!answer) return tDriver();
  if ((answer->error & cSCIPError::ESCIP2_EXTSTATUS) != 0) return resetProbe(std::move(probe));
  if (!isRefused(answer->error) || (answer->error & cSCIPError::ESCIP2_STATUS) != 0) {
    return activate(std::move(probe));
  }
  return detectScip1(link, std::move(probe));
}

}  // namespace

const char* const cSensorDriverManager::protoId[5] = {
    "00000",
    "00001,(SCIP 1.0)",
    "00002,(SCIP 1.0)",
    "00003,(SCIP 1.0)",
    "00003,(SCIP1.0z[Data Encoded by 3char for over 4095m])",
};

const std::vector<int>& cSensorDriverManager::getSearchSpeeds() {
  static const std::vector<int> speeds = {115200, 500000, 19200, 57600};
  return speeds;
}

boost::shared_ptr<cSensorDriver> cSensorDriverManager::create(std::string device) {
  const boost::shared_ptr<kavTBX::cPortSetting> setting(new kavTBX::cPortSetting);
  return create(boost::shared_ptr<kavTBX::basic_portbuf<char>>(
      new kavTBX::basic_portbuf<char>(device, setting)));
}

boost::shared_ptr<cSensorDriver> cSensorDriverManager::create(
    boost::shared_ptr<kavTBX::basic_portbuf<char>> portbuf) {
  return create(tLink(new cTarvoLink(portbuf)));
}

boost::shared_ptr<cSensorDriver> cSensorDriverManager::create(boost::shared_ptr<cTarvoLink> link) {
  kavTBX::basic_portbuf<char>& port = *link->portbuf;
  port.readTimeout = SEARCH_TIMEOUT;
  tDriver driver = tryCreate(link);
  for (int pass = 0; pass < SEARCH_PASSES; ++pass) {
    for (const int speed : getSearchSpeeds()) {
      if (driver) return driver;
      port.getSetting()->baudRate = speed;
      port.termSetup(port.getSetting());
      driver = tryCreate(link);
    }
  }
  if (driver) return driver;
  std::cout << "Failed all 19200/57600/115200/500000bps. (even tried 3times for each)" << std::endl;
  std::cout << "[" << port.getDevice() << "]" << std::endl;
  std::cerr << "cSensorDriver::Could not activate driver" << std::endl;
  return tDriver();
}

boost::shared_ptr<cSensorDriver> cSensorDriverManager::tryCreate(
    boost::shared_ptr<cTarvoLink>& link) {
  if (!link->portbuf->isTerminal()) return tDriver();
  try {
    return detect(link);
  } catch (const boost::thread_exception&) {
    return tDriver();  // the system has no thread left for the probe
  }
}
