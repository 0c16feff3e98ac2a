#include "tools/cli/cInfoCommand.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "tools/base/cFailure.h"
#include "tools/base/messages.h"
#include "tools/base/printable.h"
#include "tools/cli/cScanFeed.h"
#include "tools/cli/deviceOptions.h"
#include "tools/cli/problems.h"
#include "tools/cli/searchPorts.h"
#include "tools/cli/summary.h"
#include "tools/output/cOutput.h"

namespace tool {

namespace {

constexpr std::chrono::milliseconds LOOK_PAUSE{100};
constexpr std::chrono::seconds CHECKUP_TIME{1};
constexpr std::chrono::seconds CHECKUP_LIMIT{6};
constexpr int SCANS_FOR_RATE = 3;

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

std::vector<cFact> factsOf(const std::string& device, const tarvo::cSensorInfo& sensor) {
  return {{"Device", "device", device, ""},
          {"Vendor", "vendor", sensor.vendor, ""},
          {"Product", "product", sensor.product, ""},
          {"Firmware", "firmware", sensor.firmware, ""},
          {"Protocol", "protocol", sensor.protocol, ""},
          {"Serial number", "serial", sensor.serial, ""},
          {"Status", "status", sensor.status, ""},
          {"Dialect", "dialect", tarvo::toText(sensor.dialect), ""},
          {"First step", "first_step", sensor.firstStep, ""},
          {"Last step", "last_step", sensor.lastStep, ""},
          {"Front step", "front_step", sensor.frontStep, ""},
          {"Shortest distance", "min_distance_mm", sensor.minDistance, " mm"},
          {"Longest distance", "max_distance_mm", sensor.maxDistance, " mm"},
          {"Steps per turn", "steps_per_turn", sensor.stepsPerTurn, ""},
          {"Speed", "speed_rpm", nullIfZero(sensor.turnsPerMinute), " rpm"},
          {"Line speed found", "line_speed_bps", sensor.lineSpeed, " bits/s"}};
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

/// How well a sensor's scans arrive, or why none does. A plain value.
struct cCheckup {
  tarvo::cHealth health;
  std::string trouble;
};

std::string toText(const cCheckup& checkup) {
  const bool isScanning = checkup.trouble.empty();
  return fmt::format("{:<18} {}\n", "Health",
                     isScanning ? describeHealth(checkup.health) : checkup.trouble);
}

nlohmann::ordered_json toJson(const cCheckup& checkup) {
  if (!checkup.trouble.empty()) return {{"trouble", checkup.trouble}};
  const tarvo::cHealth& health = checkup.health;
  return {{"rate", health.rate},          {"expected_rate", health.expectedRate},
          {"line_rate", health.lineRate}, {"damaged", health.damaged},
          {"lost", health.lost},          {"clock_jitter_ms", health.clockJitter * 1000}};
}

std::string toJson(const std::vector<cFact>& facts, const cCheckup& checkup) {
  nlohmann::ordered_json object;
  for (const cFact& fact : facts) object[fact.key] = fact.value;
  object["health"] = toJson(checkup);
  using cHandler = nlohmann::ordered_json::error_handler_t;
  return object.dump(2, ' ', true, cHandler::replace) + "\n";
}

/// The sensor that is asked for. Throws `cFailure` when it is not there.
tarvo::cSearchResult find(const cDevice& device, const cDeviceOptions& options,
                          const cShutdown& stop) {
  tarvo::cSearchResult found;
  searchPorts(device.getPaths(), options.speed, stop, [&](tarvo::cSearchResult result) {
    const bool isOther =
        result.sensor && !options.serial.empty() && result.sensor->serial != options.serial;
    if (isOther) {
      result.problem = {tarvo::eProblem::WRONG_SENSOR,
                        fmt::format("the sensor on {} has the serial number {}, not {}.",
                                    result.device, result.sensor->serial, options.serial),
                        ""};
      result.sensor = nullptr;
    }
    const bool isTelling = result.sensor || isOther || !found.problem;
    if (isTelling) found = result;
    return found.sensor != nullptr;
  });
  if (!found.sensor) throw toFailure(found.problem, false);
  return found;
}

tarvo::cSearchResult findPatiently(const cDevice& device, const cDeviceOptions& options,
                                   const cShutdown& stop) {
  for (std::string said;;) {
    try {
      return find(device, options, stop);
    } catch (const cFailure& failure) {
      if (!options.isWaiting) throw;
      if (said != failure.what())
        printNote(
            fmt::format("{}\nwaiting for {} (--wait)", failure.what(), oneLine(device.getText())));
      said = failure.what();
    }
    if (stop.waitFor(LOOK_PAUSE)) throw cInterrupted();
  }
}

/// Takes scans for as long as a rate needs.
cCheckup examine(const cDevice& device, const cShutdown& stop) {
  cScanFeed feed(device, {}, ePatience::NONE, stop);
  try {
    const auto start = std::chrono::steady_clock::now();
    const auto isWithin = [start](std::chrono::seconds time) {
      return std::chrono::steady_clock::now() - start < time;
    };
    int scans = 0;
    while ((isWithin(CHECKUP_TIME) || (scans < SCANS_FOR_RATE && isWithin(CHECKUP_LIMIT))) &&
           !stop.isRequested()) {
      if (feed.next(LOOK_PAUSE)) ++scans;
    }
    if (scans == 0) return {{}, "no scan came"};
  } catch (const cFailure& failure) {
    return {{}, failure.what()};
  }
  return {feed.getHealth(), ""};
}

}  // namespace

cInfoCommand::cInfoCommand(CLI::App& app)
    : iCommand(app.add_subcommand("info", "Show what a sensor reports about itself")) {
  addDeviceOptions(*declaration, options);
  declaration->add_flag("--json", json, "One JSON object instead of lines");
}

void cInfoCommand::run(cShutdown& stop) {
  const cDevice device(options);
  cOutput output("", stop);
  device.announce();
  const auto found = findPatiently(device, options, stop);
  const auto facts = factsOf(device.getName(found.device), *found.sensor);
  cDeviceOptions here = options;
  here.device = found.device;
  here.serial.clear();
  here.faults = {};
  const cCheckup checkup =
      found.problem ? cCheckup{{}, toMessage(found.problem)} : examine(cDevice(here), stop);
  if (stop.isRequested()) throw cInterrupted();
  output.write(json ? toJson(facts, checkup) : toText(facts) + toText(checkup));
}

}  // namespace tool
