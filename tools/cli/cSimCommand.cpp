#include "tools/cli/cSimCommand.h"

#include "tools/base/messages.h"
#include "tools/base/printable.h"
#include "tools/cli/deviceOptions.h"
#include "tools/cli/number.h"
#include "tools/cli/oneOf.h"
#include "tools/output/cOutput.h"

namespace tool {

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
  addFaultOptions(*declaration, faults, "it");
  declaration->add_flag("-v,--verbose", isVerbose, "Print the commands it hears on standard error");
  declaration->footer(knownFaults());
}

void cSimCommand::run(cShutdown& stop) {
  stop.expectRequest();
  cOutput output("", stop);
  if (isVerbose) {
    setting.onCommand = [](const std::string& line) { printError("heard " + sanitized(line)); };
  }
  cSimSensor sensor(setting);
  faults.apply(sensor);
  output.write(sensor.getPath() + "\n");
  stop.wait();
}

}  // namespace tool
