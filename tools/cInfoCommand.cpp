#include "tools/cInfoCommand.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "tools/cBrokenPipeWatch.h"
#include "tools/cOutput.h"
#include "tools/cSensor.h"
#include "tools/deviceOptions.h"
#include "tools/printable.h"

namespace tool {

namespace {

/// One thing known of the sensor, for both forms of the output.
struct cFact {
  const char* label;
  const char* key;
  nlohmann::ordered_json value;
  const char* unit;
};

/// A number that is 0 where the sensor has not reported it.
nlohmann::ordered_json nullIfZero(int number) {
  return number == 0 ? nlohmann::ordered_json() : nlohmann::ordered_json(number);
}

std::vector<cFact> factsOf(const std::string& device, const cSensor& sensor) {
  const cSensorDriver& info = sensor.info();
  return {{"Device", "device", device, ""},
          {"Vendor", "vendor", info.getVend(), ""},
          {"Product", "product", info.getProd(), ""},
          {"Firmware", "firmware", info.getFirm(), ""},
          {"Protocol", "protocol", info.getProt(), ""},
          {"Serial number", "serial", info.getSerial(), ""},
          {"Status", "status", info.getStatus(), ""},
          {"Dialect", "dialect", sensor.getDialect(), ""},
          {"First step", "first_step", info.getMinSpot(), ""},
          {"Last step", "last_step", info.getMaxSpot(), ""},
          {"Front step", "front_step", info.getFrontSpot(), ""},
          {"Shortest distance", "min_distance_mm", info.getMinDist(), " mm"},
          {"Longest distance", "max_distance_mm", info.getMaxDist(), " mm"},
          {"Steps per turn", "steps_per_turn", info.getNumSpot(), ""},
          {"Speed", "speed_rpm", nullIfZero(info.getScanSpeed()), " rpm"},
          {"Line speed found", "line_speed_bps", sensor.getLineSpeed(), " bits/s"}};
}

std::string toText(const cFact& fact) {
  const bool isText = fact.value.is_string();
  const bool isKnown = isText ? !fact.value.get<std::string>().empty() : !fact.value.is_null();
  if (!isKnown) return "(unknown)";
  return (isText ? sanitized(fact.value.get<std::string>()) : fact.value.dump()) + fact.unit;
}

std::string toText(const std::vector<cFact>& facts) {
  std::string text;
  for (const cFact& fact : facts) {
    text += fmt::format("{:<18} {}\n", fact.label, toText(fact));
  }
  return text;
}

std::string toJson(const std::vector<cFact>& facts) {
  nlohmann::ordered_json object;
  for (const cFact& fact : facts) object[fact.key] = fact.value;
  using cHandler = nlohmann::ordered_json::error_handler_t;
  return object.dump(2, ' ', true, cHandler::replace) + "\n";
}

}  // namespace

cInfoCommand::cInfoCommand(CLI::App& app)
    : iCommand(app.add_subcommand("info", "Show what a sensor reports about itself")) {
  addDeviceOptions(*declaration, options);
  declaration->add_flag("--json", json, "One JSON object instead of lines");
}

void cInfoCommand::run(cShutdown& stop) {
  const cDeviceName name(options);
  cOutput output("", stop);
  std::optional<cBrokenPipeWatch> reader(std::in_place, output, stop);
  const cSensor sensor(name, stop);
  const auto facts = factsOf(name.getText(), sensor);
  reader.reset();  // one who leaves once all is written has got it
  output.write(json ? toJson(facts) : toText(facts));
}

}  // namespace tool
