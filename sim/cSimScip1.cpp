#include "sim/cSimScip1.h"

#include <climits>
#include <cstdio>

#include "sim/cSimCode.h"
#include "sim/cSimText.h"

namespace {

constexpr int TWO_CHARACTER_MOST = 4095;

cSimRecord reply(const std::string& line, char status, const std::string& body = "") {
  cSimRecord record;
  record.bytes = line + "\n" + status + "\n" + body + "\n";
  return record;
}

}  // namespace

cSimRecord cSimScip1::refuse(const std::string& line, eSimUnknown how) const {
  if (how == eSimUnknown::STATUS) return reply(line, '1');
  cSimRecord record;
  if (how == eSimUnknown::ECHO_ONLY) record.bytes = line + "\n\n";
  return record;
}

cSimRecord cSimScip1::answer(const std::string& line, const cSimMoment& moment) {
  if (line == "V") return version(line);
  if (line == "L0" || line == "L1") {
    state.laser = line == "L0";
    return reply(line, '0');
  }
  if (line == "SCIP2.0") return switchOver(line);
  if (line.size() == 9 && line[0] == 'G' && cSimText::isNumber(line.substr(1)))
    return scan(line, moment);
  if (line.size() == 14 && line[0] == 'S' && cSimText::isNumber(line.substr(1, 6)))
    return lineSpeed(line);
  return refuse(line, setting.unknownCommands);
}

cSimRecord cSimScip1::version(const std::string& line) const {
  char serial[16];
  std::snprintf(serial, sizeof serial, "S%07u", static_cast<unsigned>(setting.seed % 10000000));
  const std::string protocol = setting.threeCharScip1
                                   ? "00003,(SCIP1.0z[Data Encoded by 3char for over 4095m])"
                                   : "00003,(SCIP 1.0)";
  return reply(line, '0',
               std::string("VEND:Simulated sensors;\nPROD:") + model.product +
                   ";\nFIRM:1.0.0;\nPROT:" + protocol + ";\nSERI:" + serial + ";\n");
}

cSimRecord cSimScip1::scan(const std::string& line, const cSimMoment& moment) const {
  const int first = std::stoi(line.substr(1, 3));
  const int last = std::stoi(line.substr(4, 3));
  const int cluster = std::stoi(line.substr(7, 2));
  if (last < first || last > LAST_STEP) return reply(line, '1');
  const bool wide = setting.threeCharScip1;
  const auto readings =
      world.scan(moment.nextScan, first, last, cluster, wide ? INT_MAX : TWO_CHARACTER_MOST);
  cSimRecord record =
      reply(line, '0', cSimCode::lines(cSimCode::numbers(readings, wide ? 3 : 2), false));
  record.scan = moment.nextScan;
  return record;
}

cSimRecord cSimScip1::lineSpeed(const std::string& line) {
  const int speed = std::stoi(line.substr(1, 6));
  const bool known = speed == 19200 || speed == 57600 || speed == 115200 || speed == 500000;
  if (state.speed == 0 || !known) return reply(line, '1');
  state.speed = speed;
  cSimRecord record = reply(line, '0');
  record.newSpeed = speed;
  return record;
}

cSimRecord cSimScip1::switchOver(const std::string& line) {
  if (setting.dialect != eSimDialect::SCIP1_SWITCH) return reply(line, '1');
  state.scip2 = true;
  state.laser = false;
  return reply(line, '0');
}
