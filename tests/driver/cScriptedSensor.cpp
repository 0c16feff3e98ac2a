#include "tests/driver/cScriptedSensor.h"

cScriptedSensor::cScriptedSensor(tScript givenScript) : script(givenScript) {
  cSimSetting setting;
  setting.dialect = eSimDialect::SCIP1;  // else it would scan when told to
  setting.unknownCommands = eSimUnknown::SILENT;
  setting.onCommand = [this](const std::string& line) {
    std::lock_guard<std::mutex> guard(mutex);
    sensor->say(script(line));
  };
  std::lock_guard<std::mutex> guard(mutex);
  sensor = std::make_unique<cSimSensor>(setting);
  sensor->setFault(eSimFault::NO_ANSWER);
}

void cScriptedSensor::setScript(tScript newScript) {
  std::lock_guard<std::mutex> guard(mutex);
  script = newScript;
}

std::string summed(const std::string& text) {
  int total = 0;
  for (const char c : text) total += c;
  return text + static_cast<char>(total % 64 + '0');
}

std::string record(const std::string& echo, const std::string& status, const std::string& body) {
  return echo + "\n" + summed(status) + "\n" + body + "\n";
}

std::string field(const std::string& keyAndValue) {
  const std::string sum = summed(keyAndValue);
  return keyAndValue + ";" + sum.back() + "\n";
}
