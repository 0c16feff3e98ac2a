#pragma once

#include <string>

#include "sim/cSimRecord.h"
#include "sim/cSimState.h"
#include "sim/cSimWorld.h"

/// SCIP 2.0: what each command does and answers. Knows no descriptor, clock or thread.
///
/// Where sensors differ, this one does as follows. A new MD or MS replaces the running one; all
/// other commands are answered between its records; the laser goes off when a counted one has
/// ended. In adjust mode every command but TM gets 0A, and the laser stays off when the mode ends.
/// A first step below AMIN is measured, a last step above AMAX is refused. RS resets line and motor
/// speed to those of power-on, RT leaves them. CR is for the short range model, HS for the short
/// and middle range models.
class cSimScip2 {
 public:
  /// The arguments must outlive it.
  cSimScip2(const cSimSetting& setting, const cSimModel& model, const cSimWorld& world,
            cSimState& state)
      : setting(setting), model(model), world(world), state(state) {}

  /// The answer to a line that is not blank; its bytes are empty where the settings ask for
  /// silence.
  cSimRecord answer(const std::string& line, const cSimClock& clock);
  /// The next record of the running task; there must be one.
  cSimRecord makeScan(std::uint32_t number, std::uint32_t stamp);
  /// An answer of echo, status, body.
  static cSimRecord reply(const std::string& line, const std::string& status,
                          const std::string& body = "");
  /// The answer to a line that is no command.
  cSimRecord refuse(const std::string& line, const std::string& status, eSimUnknown how) const;

 private:
  struct cCall {  ///< a command in its parts
    const std::string& line;
    std::string name;       ///< two letters
    std::string arguments;  ///< what follows them, up to the ";"
    std::string tail;       ///< from the ";" on
    const cSimClock& clock;
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
  std::string withRemark(const std::string& key, const std::string& value) const;
  double rate() const;

  const cSimSetting& setting;
  const cSimModel& model;
  const cSimWorld& world;
  cSimState& state;
};
