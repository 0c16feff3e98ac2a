#include "sim/cSimProtocol.h"

#include <cstdio>

cSimProtocol::cSimProtocol(const cSimSetting& sensorSetting, const cSimModel& sensorModel,
                           const cSimWorld& sensorWorld)
    : setting(sensorSetting),
      scip1(sensorSetting, sensorModel, sensorWorld, state),
      scip2(sensorSetting, sensorModel, sensorWorld, state) {
  state.speed = setting.speed;
  state.scip2 = setting.dialect == eSimDialect::SCIP2;
  if (!setting.scanningAtStart || setting.dialect == eSimDialect::SCIP1) return;
  state.scip2 = true;
  std::string line = setting.leftCommand;
  if (line.empty()) {
    char text[32];
    std::snprintf(text, sizeof text, "MD%04d%04d01000;4", sensorModel.first, sensorModel.last);
    line = text;
  }
  scip2.answer(line, cSimMoment());
}

cSimRecord cSimProtocol::answer(const cSimCommand& command, const cSimMoment& moment) {
  const std::string& line = command.text;
  if (line.empty()) {
    return state.scip2 ? scip2.refuse(line, "0E", setting.blankCommands)
                       : scip1.refuse(line, setting.blankCommands);
  }
  if (!state.scip2) {
    return command.tooLong ? scip1.refuse(line, setting.unknownCommands)
                           : scip1.answer(line, moment);
  }
  const bool repeated = line == unsaid;
  unsaid = line;
  if (command.tooLong) return scip2.refuse(line, "0B", setting.unknownCommands);
  return repeated ? cSimScip2::reply(line, "0B") : scip2.answer(line, moment);
}
