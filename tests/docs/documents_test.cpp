#include <gtest/gtest.h>

#include <regex>

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
  const std::regex link("\\]\\(([^)#:]+)\\)");
  int links = 0;
  for (const cDocument& document : cDocument::all()) {
    const std::filesystem::path path(SOURCE_PATH "/" + document.name);
    const std::string text = readFile(path);
    for (std::sregex_iterator found(text.begin(), text.end(), link), end; found != end; ++found) {
      ++links;
      EXPECT_TRUE(std::filesystem::exists(path.parent_path() / found->str(1)))
          << document.name << ": " << found->str(1);
    }
  }
  EXPECT_GE(links, 20) << "the links were not found";
}
