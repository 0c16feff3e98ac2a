#include "bench/cScannerReader.h"

#include <chrono>
#include <stdexcept>
#include <thread>

#include "bench/measure.h"
#include "bench/scanRecord.h"

tarvo::tScanPtr takeScan(tarvo::cSubscription& scans, const tarvo::cScanner& scanner) {
  if (tarvo::tScanPtr scan = scans.next(std::chrono::milliseconds(iReader::TIMEOUT))) return scan;
  throw std::runtime_error("no scan arrived in time. " + scanner.getHealth().problem.message);
}

void awaitState(const tarvo::cScanner& scanner, tarvo::eState state) {
  constexpr double LIMIT = 30;
  const double deadline = now() + LIMIT;
  while (scanner.getHealth().state != state) {
    if (now() > deadline)
      throw std::runtime_error("a scanner is never " + std::string(toText(state)));
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

cScannerReader::cScannerReader(const std::string& path)
    : scanner(path), scans(scanner.subscribe(DEPTH)) {}

void cScannerReader::take() {
  const tarvo::tScanPtr scan = takeScan(scans, scanner);
  if (scan->distances.size() != READINGS || scan->distances.back() != distanceAt(LAST_STEP)) {
    throw std::runtime_error("a scan differs from the one sent");
  }
}
