#include "tools/cSimCommand.h"

#include "tools/cDeviceName.h"
#include "tools/cOutput.h"

namespace tool {

cSimCommand::cSimCommand(CLI::App& app)
    : iCommand(app.add_subcommand("sim", "Run a simulated sensor on a pseudo-terminal")) {
  declaration->add_option("--model", setting.model, "short (the default), middle or long range")
      ->transform(CLI::CheckedTransformer(simModels()).description("NAME"));
  declaration
      ->add_option("--dialect", setting.dialect, "scip2 (the default), scip1 or scip1-switch")
      ->transform(CLI::CheckedTransformer(simDialects()).description("NAME"));
  declaration->add_option("--speed", setting.speed,
                          "Line speed in bits/s at which alone it answers (default: at any)");
  declaration->add_option("--rate", setting.rate, "Scans per second (default: the model's)");
  declaration->add_option("--seed", setting.seed, "Seed of its noise (default: 1)");
  declaration->add_option("--link", setting.link, "A symbolic link to keep on its path");
}

void cSimCommand::run() {
  cStop stop;
  cOutput output("", stop);
  const cSimSensor sensor(setting);
  output.write(sensor.getPath() + "\n");
  stop.wait();
}

}  // namespace tool
