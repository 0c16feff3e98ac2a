#include "tools/cDeviceName.h"

#include <fmt/format.h>

#include <sstream>

#include "tools/cFailure.h"
#include "tools/cSerialDevice.h"
#include "tools/printable.h"

namespace tool {

namespace {

const std::string SIM_PREFIX = "sim:";

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

cDeviceName::cDeviceName(const cDeviceOptions& options)
    : text(options.device.empty() ? defaultDevice() : options.device),
      speed(options.speed),
      simulated(text.rfind(SIM_PREFIX, 0) == 0) {
  if (text + ":" == SIM_PREFIX) {
    throw cFailure(eExit::BAD_INPUT, "there is no device \"sim\": did you mean \"sim:\"?");
  }
  if (!simulated) return;
  std::istringstream words(text.substr(SIM_PREFIX.size()));
  for (std::string word; std::getline(words, word, ',');) {
    if (!word.empty()) choose(word);
  }
}

void cDeviceName::choose(const std::string& word) {
  const auto model = simModels().find(word);
  const auto dialect = simDialects().find(word);
  if (model != simModels().end()) {
    setting.model = model->second;
  } else if (dialect != simDialects().end()) {
    setting.dialect = dialect->second;
  } else {
    throw cFailure(eExit::BAD_INPUT,
                   fmt::format("there is no simulated sensor \"{}\": \"{}\" is no model and no "
                               "dialect. Give sim:short, sim:middle or sim:long, and after a "
                               "comma scip2, scip1 or scip1-switch.",
                               oneLine(text), oneLine(word)));
  }
}

}  // namespace tool
