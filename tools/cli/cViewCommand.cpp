#include "tools/cli/cViewCommand.h"

#include <cstdlib>
#include <utility>

#include "tools/base/cFailure.h"
#include "tools/cli/deviceOptions.h"
#include "tools/cli/summary.h"
#include "tools/terminal/cLiveView.h"

namespace tool {

namespace {

constexpr std::chrono::milliseconds LOOK_PAUSE{100};

/// A command's scans for the view.
class cFeedSource : public iViewSource {
 public:
  cFeedSource(const cDevice& device, const cScanOptions& range, ePatience patience,
              const cShutdown& stop)
      : stop(stop), feed(device, range, patience, stop) {}

  /// Returns when scans are to come; false: `stop` was requested before.
  bool waitForSensor() {
    while (!feed.isStarted() && !stop.isRequested()) first = feed.next(LOOK_PAUSE);
    return feed.isStarted();
  }

  tarvo::tScanPtr next(std::chrono::milliseconds timeOut) override {
    return first ? std::exchange(first, nullptr) : feed.next(timeOut);
  }

  tarvo::cHealth getHealth() const override { return feed.getHealth(); }

 private:
  const cShutdown& stop;
  cScanFeed feed;
  tarvo::tScanPtr first;
};

/// Says at its end how a run went, also when that end is an error.
class cSummary {
 public:
  cSummary(const cFeedSource& source, const cRateMeter& meter) : source(source), meter(meter) {}
  cSummary(const cSummary&) = delete;
  cSummary& operator=(const cSummary&) = delete;
  ~cSummary() { printSummary(meter, source.getHealth()); }

 private:
  const cFeedSource& source;
  const cRateMeter& meter;
};

}  // namespace

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
  const cDevice device(where);
  cOutput output("", stop);
  if (!isOnce) checkTerminal(output);
  device.announce();
  cFeedSource source(device, options, getPatience(), stop);
  if (!source.waitForSensor()) return;
  if (!isOnce) stop.expectRequest();
  if (options.seconds) stop.limitTime(*options.seconds);
  cLiveView view(source);
  if (isOnce) return output.write(view.drawOnce(output, stop));
  const cSummary summary(source, view.getMeter());
  view.run(output, stop);
}

/// A live picture goes on when its sensor is lost; one picture has no use for that.
ePatience cViewCommand::getPatience() const {
  if (isOnce) return where.isWaiting ? ePatience::WAIT : ePatience::NONE;
  return where.isWaiting ? ePatience::BOTH : ePatience::RECONNECT;
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
