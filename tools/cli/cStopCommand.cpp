#include "tools/cli/cStopCommand.h"

#include <fmt/format.h>

#include "tools/base/messages.h"
#include "tools/base/printable.h"
#include "tools/cli/cScanFeed.h"
#include "tools/cli/deviceOptions.h"
#include "tools/cli/problems.h"

namespace tool {

namespace {

constexpr std::chrono::milliseconds LOOK_PAUSE{50};

}  // namespace

cStopCommand::cStopCommand(CLI::App& app)
    : iCommand(app.add_subcommand("stop", "Turn off a laser that was left on")) {
  addDeviceOptions(*declaration, options);
}

void cStopCommand::run(cShutdown& stop) {
  const cDevice device(options);
  device.announce();
  cScanFeed feed(device, {}, options.isWaiting ? ePatience::WAIT : ePatience::NONE, stop);
  feed.keepLaserOff();
  while (feed.getState().state != tarvo::eState::PAUSED) {
    feed.next(LOOK_PAUSE);
    if (stop.isRequested()) return;
  }
  if (const auto& problem = feed.getState().problem) throw toFailure(problem, false);
  printNote(fmt::format("the laser of the sensor on {} is off",
                        oneLine(device.getName(feed.getState().sensor->device))));
}

}  // namespace tool
