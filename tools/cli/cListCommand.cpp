#include "tools/cli/cListCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>

#include "tools/base/messages.h"
#include "tools/base/printable.h"
#include "tools/cli/deviceOptions.h"
#include "tools/cli/problems.h"
#include "tools/cli/searchPorts.h"
#include "tools/cli/serialDevices.h"
#include "tools/output/cOutput.h"

namespace tool {

namespace {

using tarvo::cSearchResult;
using tarvo::cSerialDevice;

/// A device, and what a probe found on it where there was one.
struct cRow {
  cSerialDevice device;
  std::optional<cSearchResult> result;
};

std::string toText(const cSearchResult& result) {
  if (!result.sensor) return result.problem.message.substr(0, result.problem.message.find(". "));
  return fmt::format("{}, {}, {} bits/s", sanitized(result.sensor->product),
                     tarvo::toText(result.sensor->dialect), result.sensor->lineSpeed);
}

std::string toText(const cRow& row) {
  const cSerialDevice& device = row.device;
  std::string text = oneLine(device.path) + "\n";
  const auto add = [&text](const char* label, const std::string& value) {
    if (!value.empty()) text += fmt::format("  {:<9}{}\n", label, value);
  };
  add("by id", oneLine(device.byId));
  add("by path", oneLine(device.byPath));
  add("owner", fmt::format("{}, group {}", device.owner, device.group));
  add("you", device.isPermitted ? "may open it" : "may not open it. " + device.hint);
  add("held by", device.users.empty() ? "" : tarvo::toText(device.users));
  if (row.result) add("sensor", toText(*row.result));
  return text;
}

nlohmann::ordered_json toJson(const cSearchResult& result) {
  if (!result.sensor) return {{"found", false}, {"trouble", toMessage(result.problem)}};
  return {{"found", true},
          {"product", result.sensor->product},
          {"serial", result.sensor->serial},
          {"dialect", tarvo::toText(result.sensor->dialect)},
          {"line_speed_bps", result.sensor->lineSpeed}};
}

nlohmann::ordered_json orNull(const std::string& text) {
  return text.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(text);
}

nlohmann::ordered_json toJson(const cRow& row) {
  const cSerialDevice& device = row.device;
  auto holders = nlohmann::ordered_json::array();
  for (const auto& user : device.users) holders.push_back({{"pid", user.pid}, {"name", user.name}});
  nlohmann::ordered_json object = {
      {"device", device.path}, {"by_id", orNull(device.byId)}, {"by_path", orNull(device.byPath)},
      {"owner", device.owner}, {"group", device.group},        {"may_open", device.isPermitted},
      {"held_by", holders}};
  if (row.result) object["sensor"] = toJson(*row.result);
  return object;
}

std::vector<std::string> freePaths(const std::vector<cRow>& rows) {
  std::vector<std::string> paths;
  for (const cRow& row : rows) {
    if (isFree(row.device)) paths.push_back(row.device.path);
  }
  return paths;
}

}  // namespace

cListCommand::cListCommand(CLI::App& app)
    : iCommand(app.add_subcommand("list", "Show the serial devices of this machine")) {
  declaration->add_flag("--json", json, "One JSON array instead of lines");
  declaration->add_flag(
      "--probe", isProbing,
      "Look for a sensor on each that is free, side by side (up to 5 s where none "
      "answers)");
  addVerbosityOptions(*declaration);
  declaration->footer(
      "The environment variable TARVOLINK_DEVICES (PATH:PATH...) names the devices to show, and to "
      "choose a default DEVICE from, in place of those that the system knows.");
}

void cListCommand::run(cShutdown& stop) {
  cOutput output("", stop);
  std::vector<cRow> rows;
  for (const auto& device : serialDevices()) rows.push_back({device, {}});
  if (rows.empty()) printNote("no serial device here; 'sim:' is a simulated sensor");
  const auto show = [&](const cRow& row) {
    if (!json) output.write(toText(row));
  };
  for (const cRow& row : rows) {
    if (!isProbing || !isFree(row.device)) show(row);
  }
  if (isProbing) {
    searchPorts(freePaths(rows), 0, stop, [&](const cSearchResult& result) {
      const auto row = std::find_if(rows.begin(), rows.end(), [&](const cRow& each) {
        return each.device.path == result.device;
      });
      row->result = result;
      show(*row);
      return false;
    });
  }
  if (!json) return;
  auto array = nlohmann::ordered_json::array();
  for (const cRow& row : rows) array.push_back(toJson(row));
  using cHandler = nlohmann::ordered_json::error_handler_t;
  output.write(array.dump(2, ' ', true, cHandler::replace) + "\n");
}

}  // namespace tool
