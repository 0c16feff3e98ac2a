#pragma once

#include <string>

#include "sim/cSimRecord.h"
#include "sim/cSimState.h"
#include "sim/cSimWorld.h"

/// SCIP 1.x: what each command answers and does. Knows no descriptor, clock or thread. An answer
/// is the echo, one status digit, the body without sums and an empty line.
class cSimScip1 {
 public:
  static constexpr int LAST_STEP = 768;  ///< the last step that G knows

  cSimScip1(const cSimSetting& sensorSetting, const cSimModel& sensorModel,
            const cSimWorld& sensorWorld, cSimState& sensorState)
      : setting(sensorSetting), model(sensorModel), world(sensorWorld), state(sensorState) {}

  /// The answer to a line that is not blank; with no bytes where the settings want silence.
  cSimRecord answer(const std::string& line, const cSimMoment& moment);
  /// What a line gets that no command matches.
  cSimRecord refuse(const std::string& line, eSimUnknown how) const;

 private:
  cSimRecord version(const std::string& line) const;
  cSimRecord scan(const std::string& line, const cSimMoment& moment) const;
  cSimRecord lineSpeed(const std::string& line);
  cSimRecord switchOver(const std::string& line);

  const cSimSetting& setting;
  const cSimModel& model;
  const cSimWorld& world;
  cSimState& state;
};
