#include "tools/cli/cHelpCommand.h"

#include <algorithm>

#include "tools/cli/suggestion.h"
#include "tools/output/cOutput.h"

namespace tool {

cHelpCommand::cHelpCommand(CLI::App& app)
    : iCommand(app.add_subcommand("help", "Show the help of the program or of a command")),
      app(app) {
  const auto check = [&app](const std::string& name) -> std::string {
    const auto names = commandNames(app);
    const bool isKnown = std::find(names.begin(), names.end(), name) != names.end();
    return isKnown ? "" : unknownCommand(app, name);
  };
  declaration->add_option("COMMAND", command, "The command (default: the whole program)")
      ->type_name("")
      ->check(check);
}

void cHelpCommand::run(cShutdown& stop) {
  const std::string program = app.get_name();
  const auto whole = [&] {
    return app.get_formatter()->make_help(&app, program, CLI::AppFormatMode::Normal);
  };
  cOutput output("", stop);
  output.write(command.empty() ? whole() : app.get_subcommand(command)->help(program));
}

std::vector<std::string> commandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands({})) names.push_back(command->get_name());
  return names;
}

std::string unknownCommand(const CLI::App& app, const std::string& name) {
  const auto names = commandNames(app);
  const std::string near = suggestion(name, names);
  const std::string all = "; there are: " + CLI::detail::join(names, ", ");
  return "there is no command \"" + name + "\"" + (near.empty() ? all : near);
}

}  // namespace tool
