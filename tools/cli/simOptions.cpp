#include "tools/cli/simOptions.h"

#include <fmt/format.h>

#include "tools/cli/number.h"

namespace tool {

namespace {

/// The value where none is given, as a user would give it.
std::string defaultOf(const cSimFaultInfo& row) {
  if (row.fault != eSimFault::STATUS) return fmt::to_string(row.value);
  return {static_cast<char>(row.value / 256), static_cast<char>(row.value % 256)};
}

eSimFault faultNamed(const std::string& name) {
  if (const auto fault = simFaultByName(name)) return *fault;
  std::string names;
  for (const cSimFaultInfo& row : simFaultTable()) {
    names += fmt::format("{}{}", names.empty() ? "" : ", ", row.name);
  }
  throw CLI::ValidationError("--fault", fmt::format("there is no fault \"{}\". There are: {}. "
                                                    "'tarvolink sim --help' tells what they do.",
                                                    name, names));
}

int valueOf(eSimFault fault, const std::string& text) {
  if (const auto value = toNumber<int>(text)) return *value;
  if (fault == eSimFault::STATUS && text.size() == 2) return simStatus(text);
  throw CLI::ValidationError(
      "--fault", fmt::format("\"{}\" {}{}", text, whyNoNumber<int>(text),
                             fault == eSimFault::STATUS ? ", or a status of two characters" : ""));
}

cSimFaults::cFault toFault(const std::string& word) {
  const std::size_t end = word.find('=');
  const eSimFault fault = faultNamed(word.substr(0, end));
  const bool hasValue = end != std::string::npos;
  return {fault, hasValue ? valueOf(fault, word.substr(end + 1)) : cSimSensor::DEFAULT_VALUE};
}

}  // namespace

const std::map<std::string, eSimModel>& simModels() {
  static const std::map<std::string, eSimModel> models = {{"short", eSimModel::SHORT_RANGE},
                                                          {"middle", eSimModel::MIDDLE_RANGE},
                                                          {"long", eSimModel::LONG_RANGE}};
  return models;
}

const std::map<std::string, eSimDialect>& simDialects() {
  static const std::map<std::string, eSimDialect> dialects = {
      {"scip2", eSimDialect::SCIP2},
      {"scip1", eSimDialect::SCIP1},
      {"scip1-switch", eSimDialect::SCIP1_SWITCH}};
  return dialects;
}

std::string knownFaults() {
  std::string lines = "Faults, with the value each has where none is given:\n";
  for (const cSimFaultInfo& row : simFaultTable()) {
    lines += fmt::format("  {:<24}{}\n", fmt::format("{}={}", row.name, defaultOf(row)), row.text);
  }
  return lines;
}

void addFaultOptions(CLI::App& command, cSimFaults& faults, const std::string& where) {
  const auto add = [&faults](const std::vector<std::string>& words) {
    for (const std::string& word : words) faults.faults.push_back(toFault(word));
  };
  const auto isTarget = [](const std::string& word) {
    const bool isKnown = word == "scan" || word == "answer" || (word[0] >= 'A' && word[0] <= 'Z');
    return isKnown ? "" : "\"" + word + "\" is not scan, answer or a command as VV";
  };
  command
      .add_option_function<std::vector<std::string>>(
          "--fault", add,
          "A fault that " + where + " has from the start; may be given several times")
      ->type_name("NAME[=VALUE]")
      ->allow_extra_args(false);
  command
      .add_option("--only", faults.only,
                  "What the faults harm: scan, answer, or what records begin with, as VV "
                  "(default: all)")
      ->check(isTarget);
}

}  // namespace tool
