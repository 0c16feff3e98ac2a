#pragma once

#include "tools/cTally.h"
#include "tools/notice.h"

namespace tool {

/// Says at its end how a run went, also when that end is an error; nothing if none was started.
class cSummary {
 public:
  explicit cSummary(const cTally& counted) : tally(counted) {}
  cSummary(const cSummary&) = delete;
  cSummary& operator=(const cSummary&) = delete;
  ~cSummary() {
    if (tally.isStarted) notice(tally.getText());
  }

 private:
  const cTally& tally;
};

}  // namespace tool
