#ifndef TARVOLINK_TOOLS_CSEARCH_H
#define TARVOLINK_TOOLS_CSEARCH_H

#include <string>
#include <utility>
#include <vector>

#include "tarvolink/tarvolink.h"
#include "tools/cHeard.h"
#include "tools/cPort.h"
#include "tools/cStop.h"

namespace tool {

/// The search for a sensor on an open port, one detection after the other as
/// `cSensorDriverManager::create` makes them, so that it can be watched.
///
/// The library tells of a detection only whether it succeeded, and a second reader on the port
/// would take bytes away from it. So each speed is listened to once by this program itself, just
/// before its first detection: it asks for the identity ("VV") and takes what comes for 300 ms.
/// Where nothing else answers, that is the most that can be known of the line.
class cSearch {
 public:
  /// `link` goes over the library's own descriptor on the tty of `tty`. Searches at its present
  /// speed first, then three times at each of `speeds`.
  cSearch(const std::string& device, const cPort& tty, boost::shared_ptr<cTarvoLink> port,
          const std::vector<int>& speeds);

  /// The speeds at which the family's sensors are delivered, in the order tried, bits per second.
  static const std::vector<int>& usualSpeeds();

  /// Makes the detections, with a status line meanwhile. Throws `cPassingFailure` when nothing
  /// answers: what was heard, the likely cause, its cure.
  boost::shared_ptr<cSensorDriver> run(cStop& stop);

 private:
  bool isNew(int speed) const;
  void setSpeed(int speed);
  std::size_t listen(int speed);
  [[noreturn]] void fail() const;

  const std::string name;
  const cPort& port;
  boost::shared_ptr<cTarvoLink> link;
  std::vector<int> detections;                // the speed of each
  std::vector<std::pair<int, cHeard>> heard;  // at each speed, in the order tried
};

}  // namespace tool

#endif
