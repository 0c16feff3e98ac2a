#include "tools/cViewCommand.h"

#include <cstdlib>
#include <optional>

#include "tools/cBrokenPipeWatch.h"
#include "tools/cFailure.h"
#include "tools/cLiveView.h"
#include "tools/cSummary.h"
#include "tools/deviceOptions.h"
#include "tools/rangeOptions.h"

namespace tool {

cViewCommand::cViewCommand(CLI::App& app)
    : iCommand(app.add_subcommand("view", "Watch a sensor's scans as a picture")) {
  addDeviceOptions(*declaration, where);
  addRangeOptions(*declaration, options);
  declaration->add_flag("--once", isOnce, "Print one picture and end; also into a file or a pipe");
  declaration->callback([this] {
    if (!isOnce || !options.seconds) return;
    throw CLI::ValidationError("--once and --duration contradict each other");
  });
  declaration->footer("Keys: + and - zoom, 0 fits the picture, space pauses, q quits.");
}

void cViewCommand::run(cShutdown& stop) {
  options.check();
  const cDeviceName name(where);
  cOutput output("", stop);
  std::optional<cBrokenPipeWatch> reader(std::in_place, output, stop);
  if (!isOnce) checkTerminal(output);
  const cSensor sensor(name, stop);
  const cScanRange range(options, sensor);
  cTally tally;
  cScanRun scans(sensor, range, stop, tally);
  if (!isOnce) stop.expectRequest();
  if (options.seconds) stop.limitTime(*options.seconds);
  cLiveView view(sensor, range, scans, tally.meter);
  try {
    if (isOnce) {
      const std::string picture = view.drawOnce(output, stop);
      reader.reset();  // one who leaves once all is written has got it
      return output.write(picture);
    }
    const cSummary summary(tally);
    view.run(output, stop);
  } catch (cTransientError& error) {
    error.report();  // now, since to stop a sensor that is silent takes its time
    throw;
  }
}

void cViewCommand::checkTerminal(const cOutput& output) const {
  const char* term = std::getenv("TERM");
  const std::string kind = term == nullptr ? "" : term;
  if (output.isTerminal() && !kind.empty() && kind != "dumb") return;
  throw cFailure(eExit::BAD_INPUT,
                 output.isTerminal()
                     ? "a live picture needs a terminal that can place text, and TERM is \"" +
                           kind + "\". Set TERM to your terminal's kind, or give --once."
                     : "a live picture needs a terminal on standard output. Give --once to print "
                       "one picture into a file or a pipe.");
}

}  // namespace tool
