#include "sim/cSimScip2.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "sim/cSimCode.h"
#include "sim/cSimText.h"

namespace {

constexpr std::size_t MAX_HOST_STRING = 16;  // characters behind the ";"

bool isStringLetter(char c) {
  return cSimText::isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
         std::string(" ._+@").find(c) != std::string::npos;
}

/// The status that refuses a host string (";" included); "" if it is valid.
std::string stringError(const std::string& tail) {
  // Too long comes before bad letters: a longer string may have both faults.
  if (tail.size() > MAX_HOST_STRING + 1) return "0G";
  const bool good = tail.empty() || std::all_of(tail.begin() + 1, tail.end(), isStringLetter);
  return good ? "" : "0H";
}

// The ";" belongs to the line but not to its sum.
std::string information(const std::string& key, const std::string& value) {
  const std::string text = key + ":" + value;
  return text + ";" + cSimCode::sum(text) + "\n";
}

std::string information(const std::string& key, int value) {
  return information(key, std::to_string(value));
}

}  // namespace

struct cSimScip2::cCommand {
  const char* name;
  std::size_t arguments;  ///< how many characters they have
  cSimRecord (cSimScip2::*run)(const cCall&);
};

const cSimScip2::cCommand* cSimScip2::find(const std::string& name) {
  static const cCommand COMMANDS[] = {
      {"VV", 0, &cSimScip2::version},     {"PP", 0, &cSimScip2::parameters},
      {"II", 0, &cSimScip2::status},      {"BM", 0, &cSimScip2::laserOn},
      {"QT", 0, &cSimScip2::quit},        {"RS", 0, &cSimScip2::reset},
      {"RT", 0, &cSimScip2::reset},       {"TM", 1, &cSimScip2::adjust},
      {"SS", 6, &cSimScip2::lineSpeed},   {"CR", 2, &cSimScip2::motorSpeed},
      {"HS", 1, &cSimScip2::sensitivity}, {"MD", 13, &cSimScip2::measure},
      {"MS", 13, &cSimScip2::measure},    {"GD", 10, &cSimScip2::stored},
      {"GS", 10, &cSimScip2::stored}};
  for (const cCommand& command : COMMANDS)
    if (name == command.name) return &command;
  return nullptr;
}

cSimRecord cSimScip2::reply(const std::string& line, const std::string& status,
                            const std::string& body) {
  cSimRecord record;
  record.bytes = line + "\n" + cSimCode::withSum(status) + body + "\n";
  return record;
}

cSimRecord cSimScip2::refuse(const std::string& line, const std::string& status,
                             eSimUnknown how) const {
  if (how == eSimUnknown::STATUS) return reply(line, status);
  cSimRecord record;
  if (how == eSimUnknown::ECHO_ONLY) record.bytes = line + "\n\n";
  return record;
}

// The order of the checks decides which status a line with several faults gets: an unknown command
// gets 0E whatever follows it, and a bad host string comes before missing or surplus parameters.
cSimRecord cSimScip2::answer(const std::string& line, const cSimClock& clock) {
  const std::size_t end = std::min(line.find(';'), line.size());
  const std::string text = line.substr(0, end);
  const std::string name = text.substr(0, 2);
  const cCommand* command = find(name);
  if (command == nullptr) return refuse(line, "0E", setting.unknownCommands);

  const cCall call = {line, name, text.substr(2), line.substr(end), clock};
  const std::string error = stringError(call.tail);
  if (!error.empty()) return reply(line, error);
  if (call.arguments.size() < command->arguments) return reply(line, "0C");
  if (call.arguments.size() > command->arguments) return reply(line, "0D");
  if (state.adjusting && name != "TM") return reply(line, "0A");
  return (this->*command->run)(call);
}

cSimRecord cSimScip2::version(const cCall& call) {
  return reply(call.line, "00",
               information("VEND", "Simulated sensors") + information("PROD", model.product) +
                   information("FIRM", "1.0.0") + information("PROT", "SCIP 2.0") +
                   information("SERI", cSimModel::serialNumber(setting)));
}

cSimRecord cSimScip2::parameters(const cCall& call) {
  return reply(call.line, "00",
               information("MODL", model.name) + information("DMIN", model.minDistance) +
                   information("DMAX", model.maxDistance) + information("ARES", model.perTurn) +
                   information("AMIN", model.first) + information("AMAX", model.last) +
                   information("AFRT", model.front) + information("SCAN", model.rpm));
}

std::string cSimScip2::withRemark(const std::string& key, const std::string& value) const {
  // Sensors differ in whether the sum covers the remark. The value has to be read either way.
  const std::string remark = "<-Default setting by user";
  if (setting.remark == eSimRemark::NONE) return information(key, value);
  if (setting.remark == eSimRemark::INSIDE_SUM) return information(key, value + remark);
  const std::string text = key + ":" + value;
  return text + remark + ";" + cSimCode::sum(text) + "\n";
}

cSimRecord cSimScip2::status(const cCall& call) {
  // Six hexadecimal digits of 24 bits, as some models write it; TM1 has four characters instead.
  char time[16];
  std::snprintf(time, sizeof time, "%06X", static_cast<unsigned>(call.clock.stamp & 0xFFFFFF));
  // The texts differ by model, so that a driver cannot rely on one of them.
  const bool brief = setting.model == eSimModel::SHORT_RANGE;
  const int rpm = static_cast<int>(std::lround(rate() * 60));
  return reply(call.line, "00",
               information("MODL", model.name) + information("LASR", state.laser ? "ON" : "OFF") +
                   withRemark("SCSP", std::to_string(rpm) + "[rpm]") +
                   information("MESM", state.adjusting ? "Adjusting"
                                       : state.task    ? "Measuring"
                                                       : "Idle") +
                   withRemark("SBPS", state.speed == 0 ? "USB only"
                                                       : std::to_string(state.speed) + "[bps]") +
                   information("TIME", time) +
                   information("STAT", brief ? "Sensor works well." : "Stable 000 no error."));
}

cSimRecord cSimScip2::laserOn(const cCall& call) {
  if (state.laser) return reply(call.line, "02");
  state.laser = true;
  return reply(call.line, "00");
}

cSimRecord cSimScip2::quit(const cCall& call) {
  state.task.reset();
  state.laser = false;
  return reply(call.line, "00");
}

// A running task ends and the laser goes off, since the new state is that of power-on.
cSimRecord cSimScip2::reset(const cCall& call) {
  cSimState fresh;
  const bool isFull = call.name == "RS";
  fresh.speed = isFull ? setting.speed : state.speed;
  fresh.slowdown = isFull ? 0 : state.slowdown;
  state = fresh;
  cSimRecord record = reply(call.line, "00");
  record.newSpeed = state.speed;
  record.newRate = rate();
  return record;
}

// TM0 begins adjust mode, TM1 asks for the time, TM2 ends the mode.
cSimRecord cSimScip2::adjust(const cCall& call) {
  const char code = call.arguments[0];
  if (code < '0' || code > '2') return reply(call.line, "01");
  if (code == '1') {
    if (!state.adjusting) return reply(call.line, "04");
    return reply(call.line, "00",
                 cSimCode::withSum(cSimCode::encode(call.clock.stamp & 0xFFFFFF, 4)));
  }
  const bool begin = code == '0';
  if (begin == state.adjusting) return reply(call.line, begin ? "02" : "03");
  state.adjusting = begin;
  state.laser = false;
  state.task.reset();
  return reply(call.line, "00");
}

cSimRecord cSimScip2::lineSpeed(const cCall& call) {
  if (!cSimText::isNumber(call.arguments)) return reply(call.line, "01");
  // A USB sensor has no line speed to change.
  if (state.speed == 0) return reply(call.line, "04");
  const int speed = std::stoi(call.arguments);
  if (!cSimModel::acceptsSpeed(speed)) return reply(call.line, "02");
  if (speed == state.speed) return reply(call.line, "03");
  state.speed = speed;
  cSimRecord record = reply(call.line, "00");
  record.newSpeed = speed;
  return record;
}

double cSimScip2::rate() const {
  const double own = setting.rate > 0 ? setting.rate : model.rate();
  return own * (100 - state.slowdown) / 100;
}

cSimRecord cSimScip2::motorSpeed(const cCall& call) {
  if (setting.model != eSimModel::SHORT_RANGE) return reply(call.line, "04");
  if (!cSimText::isNumber(call.arguments)) return reply(call.line, "01");
  const int code = std::stoi(call.arguments);
  // 00 and 99 both mean the model's own speed, 01 to 10 are percent below it.
  const int level = code == 99 ? 0 : code;
  if (level > 10) return reply(call.line, "02");
  if (level == state.slowdown) return reply(call.line, "03");
  state.slowdown = level;
  cSimRecord record = reply(call.line, "00");
  record.newRate = rate();
  return record;
}

cSimRecord cSimScip2::sensitivity(const cCall& call) {
  if (setting.model == eSimModel::LONG_RANGE) return reply(call.line, "04");
  if (call.arguments != "0" && call.arguments != "1") return reply(call.line, "01");
  const bool sensitive = call.arguments == "1";
  if (sensitive == state.sensitive) return reply(call.line, "02");
  state.sensitive = sensitive;
  return reply(call.line, "00");
}
