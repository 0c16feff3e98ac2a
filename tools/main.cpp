#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "tools/cFailure.h"
#include "tools/cInfoCommand.h"
#include "tools/cListCommand.h"
#include "tools/cScanCommand.h"
#include "tools/cSimCommand.h"
#include "tools/cViewCommand.h"
#include "tools/notice.h"

namespace {

/// Descriptors 0 to 2 that the caller closed would be given to the port, and messages written
/// to the sensor. Opened here for the wrong direction, so that using one is still an error.
void occupyStandardDescriptors() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(fd, F_GETFD) < 0) open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

std::string exitStatuses() {
  const auto row = [](tool::eExit status, const char* text) {
    return "  " + std::to_string(static_cast<int>(status)) + "  " + text + "\n";
  };
  return "Exit status:\n" +
         row(tool::eExit::SUCCESS, "all done, or ended by a signal or a reader who had enough") +
         row(tool::eExit::BAD_INPUT, "an option's value, a file or the device is at fault") +
         row(tool::eExit::USAGE, "the command line cannot be understood") +
         row(tool::eExit::NO_SENSOR, "no sensor answers on the device") +
         row(tool::eExit::SCANS_STOPPED, "a running scan dried up");
}

std::string usageError(const CLI::App* app, const CLI::Error& error) {
  std::string command = app->get_name();
  for (const CLI::App* chosen : app->get_subcommands()) command += " " + chosen->get_name();
  return "tarvolink: " + std::string(error.what()) + "\nSee '" + command + " --help'.\n";
}

int parseAndRun(int argc, char** argv) {
  CLI::App app("Finds laser range finders on serial lines and takes their scans.", "tarvolink");
  app.set_version_flag("--version", "tarvolink " TARVOLINK_VERSION);
  app.footer(exitStatuses());
  app.failure_message(usageError);
  app.require_subcommand(0, 1);  // none is told below, after a misspelt one
  std::vector<std::unique_ptr<tool::iCommand>> commands;
  commands.push_back(std::make_unique<tool::cListCommand>(app));
  commands.push_back(std::make_unique<tool::cInfoCommand>(app));
  commands.push_back(std::make_unique<tool::cScanCommand>(app));
  commands.push_back(std::make_unique<tool::cViewCommand>(app));
  commands.push_back(std::make_unique<tool::cSimCommand>(app));
  try {
    app.parse(argc, argv);
    if (app.get_subcommands().empty())
      throw CLI::RequiredError("A subcommand (list, info, scan, view or sim)");
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : static_cast<int>(tool::eExit::USAGE);
  }
  for (const auto& command : commands) {
    if (command->isChosen()) command->run();
  }
  return static_cast<int>(tool::eExit::SUCCESS);
}

}  // namespace

int main(int argc, char** argv) {
  occupyStandardDescriptors();
  std::signal(SIGPIPE, SIG_IGN);
  try {
    return parseAndRun(argc, argv);
  } catch (tool::cFailure& failure) {
    failure.say();
    return static_cast<int>(failure.status);
  } catch (const std::exception& error) {
    tool::notice(error.what());
    return static_cast<int>(tool::eExit::BAD_INPUT);
  }
}
