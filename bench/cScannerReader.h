#pragma once

#include <string>

#include "bench/iReader.h"
#include "tarvoscan/tarvoscan.h"

/// The scanner library, as a host that pulls uses it: a cScanner, and next() on a subscription that
/// is there before the first scan.
class cScannerReader : public iReader {
 public:
  explicit cScannerReader(const std::string& path);
  void take() override;

 private:
  static constexpr std::size_t DEPTH = 16;  // as deep as the scanner's own

  tarvo::cScanner scanner;
  tarvo::cSubscription scans;
};

/// The next scan of `scans`. Throws std::runtime_error if none arrives within iReader::TIMEOUT;
/// `scanner` then says why.
tarvo::tScanPtr takeScan(tarvo::cSubscription& scans, const tarvo::cScanner& scanner);

/// Waits until `scanner` is in that state. Throws std::runtime_error if it does not get there in
/// half a minute.
void awaitState(const tarvo::cScanner& scanner, tarvo::eState state);
