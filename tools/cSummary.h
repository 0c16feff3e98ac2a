#pragma once

#include "tools/cTally.h"
#include "tools/printMessage.h"

namespace tool {

/// Says at its end how a run went, also when that end is an error; nothing if none was started.
class cSummary {
 public:
  explicit cSummary(const cTally& tally) : tally(tally) {}
  cSummary(const cSummary&) = delete;
  cSummary& operator=(const cSummary&) = delete;
  ~cSummary() {
    if (tally.isStarted) printMessage(tally.getText());
  }

 private:
  const cTally& tally;
};

}  // namespace tool
