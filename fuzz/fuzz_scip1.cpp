// SCIP 1.x: the version answer, the scan data with three characters a reading, and with two. The
// latter gets the number of readings that it has, since a wrong one ends in an assertion on
// purpose.

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <iostream>
#include <sstream>
#include <string>

#include "fuzz/cMemoryPort.h"
#include "tarvolink/scip1/cSensorDriverSCIP1z.h"

namespace {

/// How many readings the two-character decoder finds in the body, up to its first empty line.
int countPairs(const std::string& body) {
  int pairs = 0;
  std::istringstream lines(body);
  for (std::string line; std::getline(lines, line) && !line.empty();) {
    pairs += static_cast<int>(line.size() / 2);
  }
  return pairs;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  std::cerr.setstate(std::ios::failbit);  // refusals are reported there and are expected here
  std::cout.setstate(std::ios::failbit);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  const int start = data[0];
  const int end = start + data[1] * 4;
  const int cluster = data[2] % 101 - 1;
  const std::string bytes(reinterpret_cast<const char*>(data) + 3, size - 3);
  const boost::shared_ptr<cMemoryPort> port(new cMemoryPort(12));
  const boost::shared_ptr<cTarvoLink> link(new cTarvoLink(port));
  cSensorDriverSCIP1z driver(link);
  port->onWrite = [&port, &bytes](const std::string& line) { port->arrive(line + "0\n" + bytes); };
  driver.doVersion();
  driver.addScan(start, end, cluster);
  driver.cSensorDriverSCIP1::addScan(start, start + countPairs(link->record.body) - 1, 1);
  return 0;
}
