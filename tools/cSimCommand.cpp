#include "tools/cSimCommand.h"

#include <fmt/format.h>

#include "tools/cDeviceName.h"
#include "tools/cOutput.h"
#include "tools/deviceOptions.h"
#include "tools/number.h"
#include "tools/oneOf.h"
#include "tools/printMessage.h"
#include "tools/printable.h"

namespace tool {

namespace {

/// The value where none is given, as a user would give it.
std::string defaultOf(const cSimFaultInfo& row) {
  if (row.fault != eSimFault::STATUS) return fmt::to_string(row.value);
  return {static_cast<char>(row.value / 256), static_cast<char>(row.value % 256)};
}

std::string knownFaults() {
  std::string lines = "Faults, with the value each has where none is given:\n";
  for (const cSimFaultInfo& row : simFaultTable()) {
    lines += fmt::format("  {:<24}{}\n", fmt::format("{}={}", row.name, defaultOf(row)), row.text);
  }
  return lines;
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

}  // namespace

cSimCommand::cSimCommand(CLI::App& app)
    : iCommand(app.add_subcommand("sim", "Run a simulated sensor on a pseudo-terminal")) {
  declaration->add_option("--model", setting.model, "short (the default), middle or long range")
      ->transform(oneOf(simModels()));
  declaration
      ->add_option("--dialect", setting.dialect, "scip2 (the default), scip1 or scip1-switch")
      ->transform(oneOf(simDialects()));
  requireNumber<int>(
      declaration->add_option("--speed", setting.speed,
                              "Line speed in bits/s at which alone it answers (default: at any)"));
  requireNumber<double>(
      declaration->add_option("--rate", setting.rate, "Scans per second (default: the model's)"));
  requireNumber<std::uint32_t>(
      declaration->add_option("--seed", setting.seed, "Seed of its noise (default: 1)"));
  declaration->add_option("--link", setting.link, "A symbolic link to keep on its path")
      ->check(notEmpty("name a path, or leave the option out"));
  declaration
      ->add_option_function<std::vector<std::string>>(
          "--fault", [this](const auto& words) { addFaults(words); },
          "A fault that it has from the start; may be given several times")
      ->type_name("NAME[=VALUE]")
      ->allow_extra_args(false);
  declaration
      ->add_option("--only", only,
                   "What the faults harm: scan, answer, or what records begin with, as VV "
                   "(default: all)")
      ->check([](const std::string& word) {
        const bool isKnown =
            word == "scan" || word == "answer" || (word[0] >= 'A' && word[0] <= 'Z');
        return isKnown ? "" : "\"" + word + "\" is not scan, answer or a command as VV";
      });
  declaration->add_flag("--verbose", isVerbose, "Print the commands it hears on standard error");
  declaration->footer(knownFaults());
}

void cSimCommand::addFaults(const std::vector<std::string>& words) {
  for (const std::string& word : words) {
    const std::size_t end = word.find('=');
    const eSimFault fault = faultNamed(word.substr(0, end));
    const bool hasValue = end != std::string::npos;
    faults.push_back(
        {fault, hasValue ? valueOf(fault, word.substr(end + 1)) : cSimSensor::DEFAULT_VALUE});
  }
}

void cSimCommand::run(cShutdown& stop) {
  stop.expectRequest();
  cOutput output("", stop);
  if (isVerbose) {
    setting.onCommand = [](const std::string& line) { printMessage("heard " + sanitized(line)); };
  }
  cSimSensor sensor(setting);
  for (const cFault& each : faults) sensor.setFault(each.fault, each.value, only);
  output.write(sensor.getPath() + "\n");
  stop.wait();
}

}  // namespace tool
