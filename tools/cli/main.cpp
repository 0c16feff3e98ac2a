#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tools/base/cFailure.h"
#include "tools/base/cShutdown.h"
#include "tools/base/messages.h"
#include "tools/base/printable.h"
#include "tools/cli/cHelpCommand.h"
#include "tools/cli/cInfoCommand.h"
#include "tools/cli/cListCommand.h"
#include "tools/cli/cScanCommand.h"
#include "tools/cli/cSimCommand.h"
#include "tools/cli/cStopCommand.h"
#include "tools/cli/cViewCommand.h"
#include "tools/cli/suggestion.h"
#include "tools/output/cOutput.h"

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
         row(tool::eExit::SUCCESS, "all done, or the end of a run without a count") +
         row(tool::eExit::BAD_INPUT, "an option's value, a file or the device is at fault") +
         row(tool::eExit::USAGE, "the command line cannot be understood") +
         row(tool::eExit::NO_SENSOR, "no sensor answers on the device") +
         row(tool::eExit::SCANS_STOPPED, "scans stopped arriving, or --strict and one is missing") +
         "SIGINT, SIGTERM, SIGHUP and a closed reader ('| head') are the normal end of a run\n"
         "without a count ('scan -n 0', 'scan --duration', 'view', 'sim'). Anything else is cut\n"
         "short by them, cleans up and dies by that signal, or by SIGPIPE.";
}

/// CLI11 would take the next word for the value of "--first=".
void refuseEmptyValues(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--") return;
    const bool isOption = word.rfind("--", 0) == 0;
    if (isOption && word.find('=') == word.size() - 1) {
      throw CLI::ValidationError(word.substr(0, word.size() - 1), "nothing follows the \"=\"");
    }
  }
}

std::vector<std::string> longOptions(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

/// What is wrong with the first word that the command line has too many.
std::string unknownWord(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  const bool isInCommand = !chosen.empty() && !chosen.front()->remaining().empty();
  const CLI::App& place = isInCommand ? *chosen.front() : app;
  const auto words = place.remaining();
  const std::string word = words.front() == "--" ? words.back() : words.front();
  const std::string name = isInCommand ? app.get_name() + " " + place.get_name() : app.get_name();
  if (word[0] != '-' && !isInCommand) return tool::unknownCommand(app, word);
  if (word[0] != '-') return name + " takes no further word: \"" + word + "\"";
  const std::string option = word.substr(0, word.find('='));
  return name + " has no option \"" + option + "\"" + tool::suggestion(option, longOptions(place));
}

/// In plain words what CLI11 says of "-n" without a value or with two.
std::string wrongNumberOfValues(const std::string& said) {
  return said.substr(0, said.find(':')) + " takes one value, once";
}

int sayUsageError(const CLI::App& app, const std::string& error) {
  std::string command = app.get_name();
  for (const CLI::App* chosen : app.get_subcommands()) command += " " + chosen->get_name();
  tool::printError(tool::oneLine(error) + "\nSee '" + command + " --help'.");
  return static_cast<int>(tool::eExit::USAGE);
}

/// Runs `work`; the exit status. A signal that cuts it short ends the process once it has cleaned
/// up.
int run(const std::function<void(tool::cShutdown&)>& work) {
  std::signal(SIGPIPE, SIG_IGN);
  tool::cShutdown stop;
  tool::eExit status = tool::eExit::SUCCESS;
  try {
    work(stop);
  } catch (const tool::cInterrupted&) {
  } catch (const tool::cFailure& failure) {
    tool::printError(failure.what());
    status = failure.status;
  } catch (const std::exception& error) {
    tool::printError(tool::oneLine(error.what()));
    status = tool::eExit::BAD_INPUT;
  }
  const int signal = stop.getFatalSignal();
  if (signal != 0) tool::dieBySignal(signal);
  return static_cast<int>(status);
}

int print(const std::string& text) {
  return run([&text](tool::cShutdown& stop) { tool::cOutput("", stop).write(text); });
}

void parse(CLI::App& app, int argc, char** argv) {
  refuseEmptyValues(argc, argv);
  app.parse(argc, argv);
  if (app.get_subcommands().empty()) {
    throw CLI::RequiredError("A command (" + CLI::detail::join(tool::commandNames(app), ", ") +
                             ")");
  }
}

int parseAndRun(int argc, char** argv) {
  CLI::App app("Finds laser range finders on serial lines and takes their scans.", "tarvolink");
  app.set_version_flag("-V,--version", "tarvolink " TARVOLINK_VERSION);
  app.footer(exitStatuses());
  app.require_subcommand(0, 1);  // checked in `parse`, so that a misspelt name is reported first
  std::vector<std::unique_ptr<tool::iCommand>> commands;
  commands.push_back(std::make_unique<tool::cListCommand>(app));
  commands.push_back(std::make_unique<tool::cInfoCommand>(app));
  commands.push_back(std::make_unique<tool::cScanCommand>(app));
  commands.push_back(std::make_unique<tool::cViewCommand>(app));
  commands.push_back(std::make_unique<tool::cStopCommand>(app));
  commands.push_back(std::make_unique<tool::cSimCommand>(app));
  commands.push_back(std::make_unique<tool::cHelpCommand>(app));
  try {
    parse(app, argc, argv);
  } catch (const CLI::Success& request) {  // --help, --version
    std::ostringstream text;
    app.exit(request, text, text);
    return print(text.str());
  } catch (const CLI::ExtrasError&) {
    return sayUsageError(app, unknownWord(app));
  } catch (const CLI::ArgumentMismatch& error) {
    return sayUsageError(app, wrongNumberOfValues(error.what()));
  } catch (const CLI::ParseError& error) {
    return sayUsageError(app, error.what());
  }
  for (const auto& command : commands) {
    if (command->isChosen()) return run([&](tool::cShutdown& stop) { command->run(stop); });
  }
  return static_cast<int>(tool::eExit::USAGE);
}

}  // namespace

int main(int argc, char** argv) {
  occupyStandardDescriptors();
  try {
    return parseAndRun(argc, argv);
  } catch (const std::exception& error) {
    tool::printError(tool::oneLine(error.what()));
    return static_cast<int>(tool::eExit::BAD_INPUT);
  }
}
