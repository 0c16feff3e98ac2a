#include "tools/cStopCommand.h"

#include <fmt/format.h>

#include "tools/cFailure.h"
#include "tools/cSensor.h"
#include "tools/deviceOptions.h"
#include "tools/printMessage.h"
#include "tools/printable.h"

namespace tool {

cStopCommand::cStopCommand(CLI::App& app)
    : iCommand(app.add_subcommand("stop", "Turn off a laser that was left on")) {
  addDeviceOptions(*declaration, options);
}

void cStopCommand::run(cShutdown& stop) {
  const cDeviceName name(options);
  const cSensor sensor(name, stop);
  const std::string device = oneLine(name.getText());
  if (!sensor.turnLaserOff()) {
    throw cFailure(
        eExit::BAD_INPUT,
        fmt::format("the sensor on {} does not confirm that its laser is off. Try again, "
                    "or take its power away.",
                    device));
  }
  printMessage(fmt::format("the laser of the sensor on {} is off", device));
}

}  // namespace tool
