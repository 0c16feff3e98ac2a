#include <gtest/gtest.h>

#include "tests/docs/cDocument.h"

namespace {

/// The lines without indentation, so that a block may be shown from within a function.
std::string flat(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    const std::size_t begin = line.find_first_not_of(' ');
    text += (begin == std::string::npos ? "" : line.substr(begin)) + "\n";
  }
  return text;
}

/// All code that the build compiles for the documentation.
std::string compiledCode() {
  std::string code;
  for (const char* folder : {"/examples", "/tests/docs"}) {
    for (const auto& entry :
         std::filesystem::directory_iterator(SOURCE_PATH + std::string(folder))) {
      if (entry.path().extension() == ".cpp") code += "\n" + flat(linesOf(readFile(entry.path())));
    }
  }
  return code;
}

}  // namespace

TEST(DocumentedCodeTest, IsCompiledAndRunByTests) {
  const std::string code = compiledCode();
  int blocks = 0;
  for (const cDocument& document : cDocument::all()) {
    for (const auto& block : document.blocks) {
      if (block.language != "cpp") continue;
      ++blocks;
      EXPECT_NE(code.find("\n" + flat(block.lines)), std::string::npos)
          << document.name << " shows code that no example has:\n"
          << flat(block.lines);
    }
  }
  EXPECT_GE(blocks, 10) << "the blocks were not found";
}

TEST(DocumentedLinkTest, LeadsToAFile) {
  int links = 0;
  for (const cDocument& document : cDocument::all()) {
    const std::filesystem::path path(SOURCE_PATH "/" + document.name);
    const std::string text = readFile(path);
    for (std::size_t at = 0; (at = text.find("](", at)) != std::string::npos;) {
      at += 2;
      const std::string target = text.substr(at, text.find_first_of("#)", at) - at);
      if (target.empty() || target.find(':') != std::string::npos) continue;  // this page, the web
      ++links;
      EXPECT_TRUE(std::filesystem::exists(path.parent_path() / target))
          << document.name << ": " << target;
    }
  }
  EXPECT_GE(links, 20) << "the links were not found";
}
