#pragma once

#include <string>
#include <vector>

#include "tools/cli/iCommand.h"

namespace tool {

/// `tarvolink help [COMMAND]`: what `--help` prints.
class cHelpCommand : public iCommand {
 public:
  /// Add it last: it knows the commands that are there.
  explicit cHelpCommand(CLI::App& app);

  void run(cShutdown& stop) override;

 private:
  CLI::App& app;
  std::string command;  // "": the whole program
};

/// The names of the program's commands.
std::vector<std::string> commandNames(const CLI::App& app);

/// The message for the unknown command `name`.
std::string unknownCommand(const CLI::App& app, const std::string& name);

}  // namespace tool
