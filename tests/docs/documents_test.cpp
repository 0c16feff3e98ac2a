// What the documents show: code that is compiled, links that lead somewhere, commands that work.
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

namespace {

/// README.md, CONTRIBUTING.md and all below docs/.
std::vector<std::string> documents() {
  namespace fs = std::filesystem;
  std::vector<std::string> names{"README.md", "CONTRIBUTING.md"};
  for (const auto& entry : fs::recursive_directory_iterator(SOURCE_PATH "/docs")) {
    if (entry.path().extension() == ".md")
      names.push_back(fs::relative(entry.path(), SOURCE_PATH).string());
  }
  return names;
}

/// A line without indentation, so that a block may be shown from within a list or a function.
std::string flat(const std::string& line) {
  return line.substr(std::min(line.find_first_not_of(' '), line.size())) + "\n";
}

/// What stands between two "```" lines.
struct cBlock {
  std::string document, language, text;
};

std::vector<cBlock> blocks() {
  std::vector<cBlock> found;
  for (const std::string& document : documents()) {
    bool isInside = false;
    for (const std::string& line : linesOf(readFile(SOURCE_PATH "/" + document))) {
      const std::size_t fence = line.find("```");
      if (fence == std::string::npos) {
        if (isInside) found.back().text += flat(line);
        continue;
      }
      isInside = !isInside;
      if (isInside) found.push_back({document, line.substr(fence + 3), ""});
    }
  }
  return found;
}

/// All code that the build compiles for the documentation.
std::string compiledCode() {
  std::string code;
  for (const std::string folder : {SOURCE_PATH "/examples", SOURCE_PATH "/tests/docs"}) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      if (entry.path().extension() != ".cpp") continue;
      code += "\n";
      for (const std::string& line : linesOf(readFile(entry.path()))) code += flat(line);
    }
  }
  return code;
}

/// Every line of a block that is a command: the text up to two blanks, after which stands what it
/// does.
std::vector<std::string> documented(const std::string& program) {
  std::vector<std::string> commands;
  for (const cBlock& block : blocks()) {
    for (const std::string& line : linesOf(block.text)) {
      if (line.rfind(program, 0) == 0) commands.push_back(line.substr(0, line.find("  ")));
    }
  }
  return commands;
}

/// The same command where there is no sensor, in a folder of its own, and with an end.
std::string adapted(std::string command, const cTempFolder& folder) {
  for (const auto& [written, instead] :
       std::vector<std::pair<std::string, std::string>>{{"/dev/ttyACM0", "sim:"},
                                                        {"-n 0", "-n 3"},
                                                        {"view sim:", "view sim: --once"},
                                                        {"/tmp/sensor", folder / "sensor"},
                                                        {" &", ""}}) {
    const std::size_t at = command.find(written);
    if (at != std::string::npos) command.replace(at, written.size(), instead);
  }
  return "cd " + (folder / "") + " && PATH=" PROGRAM_FOLDER ":$PATH && exec " + command;
}

cStart shell() { return {{}, eSetting::PIPES, "/bin/sh"}; }

}  // namespace

TEST(DocumentedCodeTest, IsCompiledAndRunByTests) {
  const std::string code = compiledCode();
  int count = 0;
  for (const cBlock& block : blocks()) {
    if (block.language != "cpp") continue;
    ++count;
    EXPECT_NE(code.find("\n" + block.text), std::string::npos)
        << block.document << " shows code that no example has:\n"
        << block.text;
  }
  EXPECT_GE(count, 10) << "the blocks were not found";
}

TEST(DocumentedLinkTest, LeadsToAFile) {
  int links = 0;
  for (const std::string& document : documents()) {
    const std::filesystem::path path(SOURCE_PATH "/" + document);
    const std::string text = readFile(path);
    for (std::size_t at = 0; (at = text.find("](", at)) != std::string::npos;) {
      at += 2;
      const std::string target = text.substr(at, text.find_first_of("#)", at) - at);
      if (target.empty() || target.find(':') != std::string::npos) continue;  // this page, the web
      ++links;
      EXPECT_TRUE(std::filesystem::exists(path.parent_path() / target))
          << document << ": " << target;
    }
  }
  EXPECT_GE(links, 20) << "the links were not found";
}

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
