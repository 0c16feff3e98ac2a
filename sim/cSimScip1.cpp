#include "sim/cSimScip1.h"

#include <climits>

#include "sim/cSimCode.h"
#include "sim/cSimText.h"

namespace {

constexpr int MAX_TWO_CHARACTERS = 4095;  // two characters of six bits

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

cSimRecord cSimScip1::answer(const std::string& line, const cSimClock& clock) {
  if (line == "V") return version(line);
  if (line == "L0" || line == "L1") {
    state.laser = line == "L0";
    return reply(line, '0');
  }
  if (line == "SCIP2.0") return switchToScip2(line);
  if (line.size() == 9 && line[0] == 'G' && cSimText::isNumber(line.substr(1)))
    return scan(line, clock);
  if (line.size() == 14 && line[0] == 'S' && cSimText::isNumber(line.substr(1, 6)))
    return lineSpeed(line);
  return refuse(line, setting.unknownCommands);
}

// Only the protocol identity says whether readings have two characters or three.
cSimRecord cSimScip1::version(const std::string& line) const {
  const std::string protocol = setting.threeCharScip1
                                   ? "00003,(SCIP1.0z[Data Encoded by 3char for over 4095m])"
                                   : "00003,(SCIP 1.0)";
  return reply(line, '0',
               std::string("VEND:Simulated sensors;\nPROD:") + model.product +
                   ";\nFIRM:1.0.0;\nPROT:" + protocol +
                   ";\nSERI:" + cSimModel::serialNumber(setting) + ";\n");
}

// The range is checked against G's own limit, not the model's: steps outside the model's range are
// measured like the others. G names the scan to come, so its record waits for the end of that turn.
cSimRecord cSimScip1::scan(const std::string& line, const cSimClock& clock) const {
  const int first = std::stoi(line.substr(1, 3));
  const int last = std::stoi(line.substr(4, 3));
  const int cluster = std::stoi(line.substr(7, 2));
  if (last < first || last > LAST_STEP) return reply(line, '1');
  const bool wide = setting.threeCharScip1;
  const auto readings =
      world.scan(clock.nextScan, first, last, cluster, wide ? INT_MAX : MAX_TWO_CHARACTERS);
  cSimRecord record =
      reply(line, '0', cSimCode::dataLines(cSimCode::encode(readings, wide ? 3 : 2), false));
  record.scan = clock.nextScan;
  return record;
}

// The seven digits behind the speed are a fixed "1234567" that nothing depends on.
cSimRecord cSimScip1::lineSpeed(const std::string& line) {
  const int speed = std::stoi(line.substr(1, 6));
  // A sensor at any speed is a USB one, which has no line speed to change.
  if (state.speed == 0 || !cSimModel::acceptsSpeed(speed)) return reply(line, '1');
  state.speed = speed;
  cSimRecord record = reply(line, '0');
  record.newSpeed = speed;
  return record;
}

cSimRecord cSimScip1::switchToScip2(const std::string& line) {
  if (setting.dialect != eSimDialect::SCIP1_SWITCH) return reply(line, '1');
  state.scip2 = true;
  state.laser = false;
  return reply(line, '0');
}
