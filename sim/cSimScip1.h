#pragma once

#include <string>

#include "sim/cSimRecord.h"
#include "sim/cSimState.h"
#include "sim/cSimWorld.h"

/// SCIP 1.x: what each command does and answers. Knows no descriptor, clock or thread. An answer
/// is the echo, one status digit, the body without sums and an empty line.
class cSimScip1 {
 public:
  static constexpr int LAST_STEP = 768;  ///< the last step that G accepts

  /// The arguments must outlive it.
  cSimScip1(const cSimSetting& setting, const cSimModel& model, const cSimWorld& world,
            cSimState& state)
      : setting(setting), model(model), world(world), state(state) {}

  /// The answer to a line that is not blank; its bytes are empty where the settings ask for
  /// silence.
  cSimRecord answer(const std::string& line, const cSimClock& clock);
  /// The answer to a line that is no command.
  cSimRecord refuse(const std::string& line, eSimUnknown how) const;

 private:
  cSimRecord version(const std::string& line) const;
  cSimRecord scan(const std::string& line, const cSimClock& clock) const;
  cSimRecord lineSpeed(const std::string& line);
  cSimRecord switchToScip2(const std::string& line);

  const cSimSetting& setting;
  const cSimModel& model;
  const cSimWorld& world;
  cSimState& state;
};
