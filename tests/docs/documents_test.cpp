#include <gtest/gtest.h>

#include <filesystem>

#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

namespace {

std::vector<std::string> filesIn(const std::string& folder, const std::string& extension) {
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(SOURCE_PATH + folder)) {
    if (entry.path().extension() == extension) paths.push_back(entry.path());
  }
  return paths;
}

/// Without indentation, so that a block may be shown from within a list or a function.
std::string flat(const std::string& path) {
  std::string text = "\n";
  for (const std::string& line : linesOf(readFile(path))) {
    text += line.substr(std::min(line.find_first_not_of(' '), line.size())) + "\n";
  }
  return text;
}

}  // namespace

// Would catch code in a document that no longer compiles or works: it is none of what is built and
// run in examples/ and here.
TEST(DocumentedCode, isCompiledAndRunByTests) {
  std::string code;
  for (const char* folder : {"/examples", "/tests/docs"}) {
    for (const std::string& path : filesIn(folder, ".cpp")) code += flat(path);
  }
  auto documents = filesIn("/docs", ".md");
  documents.emplace_back(SOURCE_PATH "/README.md");
  int count = 0;
  for (const std::string& document : documents) {
    const std::string text = flat(document);
    const std::string fence = "\n```";
    for (std::size_t at = 0; (at = text.find(fence + "cpp\n", at)) != std::string::npos; ++count) {
      at += fence.size() + 3;
      const std::string block = text.substr(at, text.find(fence, at) + 1 - at);
      EXPECT_NE(code.find(block), std::string::npos)
          << document << " shows, no example has" << block;
    }
  }
  EXPECT_GE(count, 10) << "the blocks were not found";
}
