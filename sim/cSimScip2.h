#pragma once

#include <string>

#include "sim/cSimRecord.h"
#include "sim/cSimState.h"
#include "sim/cSimWorld.h"

/// SCIP 2.0: what each command answers and does. Knows no descriptor, clock or thread.
///
/// Where sensors differ it chooses: a new MD or MS replaces the one that runs; all other commands
/// are answered between its records; the laser goes off when a counted one has ended. In adjust
/// mode every command but TM gets 0A, and the laser stays off when the mode ends. A first step
/// below AMIN is measured, a last one above AMAX is refused. RS sets line and motor speed back to
/// those of power-on, RT leaves them. CR is for the short range model, HS for the short and middle
/// range model.
class cSimScip2 {
 public:
  cSimScip2(const cSimSetting& sensorSetting, const cSimModel& sensorModel,
            const cSimWorld& sensorWorld, cSimState& sensorState)
      : setting(sensorSetting), model(sensorModel), world(sensorWorld), state(sensorState) {}

  /// The answer to a line that is not blank; with no bytes where the settings want silence.
  cSimRecord answer(const std::string& line, const cSimMoment& moment);
  /// The next record of the running task, which must be there.
  cSimRecord makeScan(std::uint32_t number, std::uint32_t stamp);
  /// An answer of echo, status, body.
  static cSimRecord reply(const std::string& line, const std::string& status,
                          const std::string& body = "");
  /// What a line gets that no command matches.
  cSimRecord refuse(const std::string& line, const std::string& status, eSimUnknown how) const;

 private:
  struct cCall {  ///< a command taken apart
    const std::string& line;
    std::string name;       ///< two letters
    std::string arguments;  ///< what follows them, up to the ";"
    std::string tail;       ///< from the ";" on
    const cSimMoment& moment;
  };
  struct cCommand;  ///< a row of the table of commands
  static const cCommand* find(const std::string& name);

  cSimRecord version(const cCall& call);
  cSimRecord parameters(const cCall& call);
  cSimRecord status(const cCall& call);
  cSimRecord laserOn(const cCall& call);
  cSimRecord quit(const cCall& call);
  cSimRecord reset(const cCall& call);
  cSimRecord adjust(const cCall& call);
  cSimRecord lineSpeed(const cCall& call);
  cSimRecord motorSpeed(const cCall& call);
  cSimRecord sensitivity(const cCall& call);
  cSimRecord measure(const cCall& call);
  cSimRecord stored(const cCall& call);

  std::string rangeError(const std::string& text) const;
  std::string scanBody(const cSimTask& task, std::uint32_t number, std::uint32_t stamp) const;
  std::string remarked(const std::string& key, const std::string& value) const;
  double rate() const;

  const cSimSetting& setting;
  const cSimModel& model;
  const cSimWorld& world;
  cSimState& state;
};
