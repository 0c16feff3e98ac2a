// A SCIP 2.0 session: an information answer or a running scan whose bytes are the input, in reads
// of 1, 12 and all characters; the driver's result must not depend on that.

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "fuzz/cMemoryPort.h"
#include "tarvolink/scip2/cSensorDriverSCIP2.h"

namespace {

/// The echo and a good status for the line that the host wrote.
std::string acknowledge(const std::string& line) { return line + "00P\n"; }

std::string fetch(cSensorDriverSCIP2& driver, cMemoryPort& port, unsigned kind,
                  const std::string& bytes) {
  port.onWrite = [&port, &bytes](const std::string& line) {
    port.arrive(acknowledge(line) + bytes + "\n\n\n");
  };
  int result = 0;
  try {
    if (kind == 0) result = driver.fetchVersionStr();
    if (kind == 1) result = driver.fetchParameters();
    if (kind == 2) result = driver.updateStatus();
  } catch (const std::out_of_range&) {
    result = 1;
  }
  return std::to_string(result) + driver.getResponseBody() + driver.getSerial() +
         std::to_string(driver.getScanSpeed());
}

std::string describe(const cScan& scan) {
  std::ostringstream text;
  for (const cScanPoint& point : scan.points) text << point.distance << '@' << point.angle << ' ';
  return text.str();
}

std::string takeAll(cSensorDriverSCIP2& driver) {
  std::string taken;
  for (;;) {
    try {
      const boost::shared_ptr<cScan> scan = driver.getScanFirst();
      if (!scan) return taken;
      taken += describe(*scan) + "\n";
    } catch (const std::out_of_range&) {
      taken += "out of range\n";
    }
  }
}

std::string scan(cSensorDriverSCIP2& driver, cMemoryPort& port, const std::string& bytes) {
  port.onWrite = [&port](const std::string& line) { port.arrive(acknowledge(line) + "\n"); };
  driver.startScan(44, 725, 1, 0, 0, bytes.size() % 2 == 0 ? 4095 : 5600);
  port.arrive(bytes);
  port.waitUntilDrained();
  return takeAll(driver);
}

std::string run(unsigned kind, const std::string& bytes, std::size_t piece) {
  const boost::shared_ptr<cMemoryPort> port(new cMemoryPort(piece));
  cSensorDriverSCIP2 driver(boost::shared_ptr<cTarvoLink>(new cTarvoLink(port)));
  driver.start();
  return kind < 3 ? fetch(driver, *port, kind, bytes) : scan(driver, *port, bytes);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  std::cerr.setstate(std::ios::failbit);  // refusals are reported there and are expected here
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const unsigned kind = data[0] % 4;
  const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::string byOne = run(kind, bytes, 1);
  if (byOne != run(kind, bytes, 12) || byOne != run(kind, bytes, bytes.size() + 64)) std::abort();
  return 0;
}
