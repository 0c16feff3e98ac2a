#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <regex>

#include "tests/docs/cDocument.h"

namespace {

/// Every line of a block that is a command: the text up to two blanks, after which stands what it
/// does.
std::vector<std::string> documented(const std::string& program) {
  std::vector<std::string> commands;
  for (const cDocument& document : cDocument::all()) {
    for (const auto& block : document.blocks) {
      for (const std::string& line : block.lines) {
        if (line.rfind(program, 0) == 0) commands.push_back(line.substr(0, line.find("  ")));
      }
    }
  }
  return commands;
}

/// The same command where there is no sensor, in a folder of its own, and with an end.
std::string adapted(std::string command, const cTempFolder& folder) {
  for (const auto& [written, instead] :
       std::vector<std::pair<const char*, std::string>>{{"/dev/ttyACM0", "sim:"},
                                                        {"-n 0", "-n 3"},
                                                        {"view sim:", "view sim: --once"},
                                                        {"/tmp/sensor", folder / "sensor"},
                                                        {" &", ""}}) {
    command = std::regex_replace(command, std::regex(written), instead);
  }
  return "cd " + (folder / "") + " && PATH=" PROGRAM_FOLDER ":$PATH && exec " + command;
}

cStart shell() { return {{}, eSetting::PIPES, "/bin/sh"}; }

}  // namespace

TEST(DocumentedCommandTest, DoesWithASimulatedSensorWhatItSays) {
  const bool isJqMissing = runProgram({"-c", "command -v jq"}, shell()).status != 0;
  const auto commands = documented("tarvolink ");
  EXPECT_GE(commands.size(), 10u) << "the commands were not found";
  for (const std::string& command : commands) {
    SCOPED_TRACE(command);
    if (isJqMissing && command.find("| jq") != std::string::npos) continue;
    const cTempFolder folder;
    cProgram program({"-c", adapted(command, folder)}, shell());
    if (command.rfind("tarvolink sim ", 0) == 0) {  // goes on until it is told to stop
      program.readLine();
      program.signal(SIGINT);
    }
    EXPECT_EQ(program.wait(), 0) << program.getErrors();
  }
}

TEST(DocumentedCommandTest, NamesScriptsThatAreThere) {
  const auto commands = documented("script/");
  EXPECT_GE(commands.size(), 2u) << "the commands were not found";
  for (const std::string& command : commands) {
    const std::string path = SOURCE_PATH "/" + command.substr(0, command.find(' '));
    EXPECT_EQ(access(path.c_str(), X_OK), 0) << path;
  }
}
