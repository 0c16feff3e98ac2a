#include "tools/cListCommand.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <optional>

#include "tools/cBrokenPipeWatch.h"
#include "tools/cFailure.h"
#include "tools/cOutput.h"
#include "tools/cSensor.h"
#include "tools/cSerialDevice.h"
#include "tools/printMessage.h"
#include "tools/printable.h"

namespace tool {

namespace {

/// What a probe found: a sensor, or why not.
struct cFinding {
  std::string product;
  std::string dialect;
  int lineSpeed = 0;  // 0: no sensor
  std::string trouble;
};

struct cRow {
  cSerialDevice device;
  std::optional<cFinding> finding;  // empty: not probed
};

cFinding probe(const std::string& path, cShutdown& stop) {
  try {
    const cSensor sensor(cDeviceName({path, 0}), stop);
    return {sanitized(sensor.info().getProd()), sensor.getDialect(), sensor.getLineSpeed(), ""};
  } catch (const cFailure& failure) {
    return {"", "", 0, failure.what()};
  }
}

std::string toText(const cFinding& finding) {
  if (finding.lineSpeed == 0) return finding.trouble.substr(0, finding.trouble.find('.'));
  return fmt::format("{}, {}, {} bits/s", finding.product, finding.dialect, finding.lineSpeed);
}

std::string toText(const cRow& row) {
  const cAccess& access = row.device.getAccess();
  std::string text = oneLine(row.device.getPath()) + "\n";
  const auto add = [&text](const char* label, const std::string& value) {
    if (!value.empty()) text += fmt::format("  {:<9}{}\n", label, value);
  };
  add("by id", oneLine(row.device.getById()));
  add("by path", oneLine(row.device.getByPath()));
  add("owner", fmt::format("{}, group {}", access.getOwner(), access.getGroup()));
  add("you", access.mayOpen() ? "may open it" : "may not open it. " + access.getCure());
  add("held by", row.device.getHolders().empty() ? "" : toText(row.device.getHolders()));
  if (row.finding) add("sensor", toText(*row.finding));
  return text;
}

nlohmann::ordered_json toJson(const cFinding& finding) {
  if (finding.lineSpeed == 0) return {{"found", false}, {"trouble", finding.trouble}};
  return {{"found", true},
          {"product", finding.product},
          {"dialect", finding.dialect},
          {"line_speed_bps", finding.lineSpeed}};
}

nlohmann::ordered_json orNull(const std::string& text) {
  return text.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(text);
}

nlohmann::ordered_json toJson(const cRow& row) {
  auto holders = nlohmann::ordered_json::array();
  for (const cHolder& holder : row.device.getHolders()) {
    holders.push_back({{"pid", holder.pid}, {"name", holder.name}});
  }
  nlohmann::ordered_json object = {{"device", row.device.getPath()},
                                   {"by_id", orNull(row.device.getById())},
                                   {"by_path", orNull(row.device.getByPath())},
                                   {"owner", row.device.getAccess().getOwner()},
                                   {"group", row.device.getAccess().getGroup()},
                                   {"may_open", row.device.getAccess().mayOpen()},
                                   {"held_by", holders}};
  if (row.finding) object["sensor"] = toJson(*row.finding);
  return object;
}

}  // namespace

cListCommand::cListCommand(CLI::App& app)
    : iCommand(app.add_subcommand("list", "Show the serial devices of this machine")) {
  declaration->add_flag("--json", json, "One JSON array instead of lines");
  declaration->add_flag("--probe", isProbing,
                        "Look for a sensor on each that is free (up to 69 s where none answers)");
  declaration->footer(
      "The environment variable TARVOLINK_DEVICES (PATH:PATH...) names the devices to show, and to "
      "choose a default DEVICE from, in place of those that the system knows.");
}

void cListCommand::run(cShutdown& stop) {
  cOutput output("", stop);
  std::optional<cBrokenPipeWatch> reader;  // else the next write finds out
  if (isProbing) reader.emplace(output, stop);
  auto array = nlohmann::ordered_json::array();
  const auto devices = cSerialDevice::all();
  for (const cSerialDevice& device : devices) {
    if (stop.isRequested()) return;
    const bool isFree = device.getAccess().mayOpen() && device.getHolders().empty();
    cRow row{device, {}};
    if (isProbing && isFree) row.finding = probe(device.getPath(), stop);
    if (json) {
      array.push_back(toJson(row));
    } else {
      output.write(toText(row));
    }
  }
  if (devices.empty()) printMessage("no serial device here; 'sim:' is a simulated sensor");
  using cHandler = nlohmann::ordered_json::error_handler_t;
  if (json) output.write(array.dump(2, ' ', true, cHandler::replace) + "\n");
}

}  // namespace tool
