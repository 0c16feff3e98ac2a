#pragma once

#include "tests/support/driving.h"

using tLines = std::vector<std::string>;

/// `text` with its sum: its bytes added up.
inline std::string summed(const std::string& text) {
  unsigned total = 0;
  for (const char c : text) total += static_cast<unsigned char>(c);
  return text + static_cast<char>((total & 0x3F) + 0x30);
}

/// A record of SCIP 2.0; `body` is lines with their ends.
inline std::string answer(const std::string& echo, const std::string& status = "00",
                          const std::string& body = "") {
  return echo + "\n" + summed(status) + "\n" + body + "\n";
}

/// The same with a time stamp and one line of readings.
inline std::string scanOf(const std::string& echo, const std::string& readings) {
  return answer(echo, "99", summed("0000") + "\n" + summed(readings) + "\n");
}

inline std::string keepSilent(const std::string&) { return ""; }

/// A sensor that answers each line that is not blank by a rule.
class cScriptedSensor : public cSimSensor {
 public:
  using tRule = std::function<std::string(const std::string& line)>;

  explicit cScriptedSensor(const tRule& rule, int speed = 0)
      : cSimSensor(makeSetting(rule, speed)) {
    setFault(eSimFault::NO_ANSWER);
  }

  /// The lines received, once there are at least `count` of them.
  tLines waitLines(std::size_t count) const {
    waitForCommand("", LONG_TIME, count);
    return getCommands();
  }

 private:
  cSimSetting makeSetting(const tRule& rule, int speed) {
    cSimSetting setting;
    setting.speed = speed;
    setting.dialect = eSimDialect::SCIP1;  // in which it never sends anything by itself
    setting.onCommand = [this, rule](const std::string& line) { inject(rule(line)); };
    return setting;
  }
};
