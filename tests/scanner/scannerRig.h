#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <mutex>

#include "sim/tarvosim.h"
#include "tarvoscan/tarvoscan.h"
#include "tests/support/waiting.h"

using namespace std::chrono_literals;

/// A session leader that opens a tty may get it as its terminal, and with it SIGHUP.
[[maybe_unused]] inline const auto HANGUP_IGNORED = std::signal(SIGHUP, SIG_IGN);

/// A sensor that turns faster than real ones.
inline cSimSetting fast(eSimDialect dialect = eSimDialect::SCIP2,
                        eSimModel model = eSimModel::SHORT_RANGE) {
  cSimSetting setting;
  setting.dialect = dialect;
  setting.model = model;
  setting.rate = 100;
  return setting;
}

/// Waits until the scanner's health is so.
inline testing::AssertionResult comesTo(const tarvo::cScanner& scanner, tarvo::eState state,
                                        tarvo::eProblem problem = tarvo::eProblem::NONE) {
  const auto isSo = [&] {
    const tarvo::cHealth health = scanner.getHealth();
    return health.state == state && health.problem.kind == problem;
  };
  if (eventually(isSo)) return testing::AssertionSuccess();
  const tarvo::cHealth health = scanner.getHealth();
  return testing::AssertionFailure() << toText(health.state) << ": " << health.problem.message;
}

/// The next scan, which must come.
inline tarvo::tScanPtr take(tarvo::iScanSource& source) {
  const tarvo::tScanPtr scan = source.next(LONG_TIME);
  if (!scan) throw std::runtime_error("no scan comes");
  return scan;
}
