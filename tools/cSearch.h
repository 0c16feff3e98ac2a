#pragma once

#include <string>
#include <vector>

#include "tarvolink/tarvolink.h"
#include "tools/cPort.h"
#include "tools/cShutdown.h"
#include "tools/cWatchedPort.h"

namespace tool {

/// The search for a sensor on an open port, one detection after the other as
/// `cSensorDriverManager::create` makes them, so that it can be shown.
class cSearch {
 public:
  /// `over` is the library's own descriptor on the tty of `tty`, and `link` goes over it. Searches
  /// at its present speed first, then three times at each of `speeds`.
  cSearch(const std::string& device, const cPort& tty, cWatchedPort& over,
          boost::shared_ptr<cTarvoLink> link, const std::vector<int>& speeds);

  /// Makes the detections, with a status line meanwhile. Throws `cTransientError` when nothing
  /// answers: what was heard, the likely cause, its cure.
  boost::shared_ptr<cSensorDriver> run(cShutdown& stop);

 private:
  void setSpeed(int speed) const;
  [[noreturn]] void fail() const;

  const std::string name;
  const cPort& port;
  cWatchedPort& watched;
  boost::shared_ptr<cTarvoLink> link;
  std::vector<int> detections;  // the speed of each
};

}  // namespace tool
