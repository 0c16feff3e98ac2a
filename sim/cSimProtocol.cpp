#include "sim/cSimProtocol.h"

#include <cstdio>

cSimProtocol::cSimProtocol(const cSimSetting& setting, const cSimModel& model,
                           const cSimWorld& world)
    : setting(setting), scip1(setting, model, world, state), scip2(setting, model, world, state) {
  state.speed = setting.speed;
  state.scip2 = setting.dialect == eSimDialect::SCIP2;
  if (!setting.scanningAtStart || setting.dialect == eSimDialect::SCIP1) return;
  state.scip2 = true;
  std::string line = setting.commandAtStart;
  if (line.empty()) {
    char text[32];
    std::snprintf(text, sizeof text, "MD%04d%04d01000;4", model.first, model.last);
    line = text;
  }
  // The answer went to the program that started the scan. A refusal shows in the missing task.
  scip2.answer(line, cSimClock());
}

cSimRecord cSimProtocol::answer(const cSimCommand& command, const cSimClock& clock) {
  const std::string& line = command.text;
  if (line.empty()) {
    return state.scip2 ? scip2.refuse(line, "0E", setting.blankCommands)
                       : scip1.refuse(line, setting.blankCommands);
  }
  if (!state.scip2) {
    return command.tooLong ? scip1.refuse(line, setting.unknownCommands)
                           : scip1.answer(line, clock);
  }
  // A sensor that is busy with a command refuses the same one, but queues others.
  const bool repeated = line == unsentLine;
  unsentLine = line;
  if (command.tooLong) return scip2.refuse(line, "0B", setting.unknownCommands);
  return repeated ? cSimScip2::reply(line, "0B") : scip2.answer(line, clock);
}
