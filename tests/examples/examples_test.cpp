#include <gtest/gtest.h>

#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

TEST(FirstScanTest, TakesFiveScans) {
  cProgram sim({"sim"});
  cStart start;
  start.path = EXAMPLES_PATH "/first_scan";
  const cResult result = runProgram({sim.readLine()}, start);
  EXPECT_EQ(result.status, 0) << result.errors;
  const auto lines = linesOf(result.output);
  ASSERT_EQ(lines.size(), 5u) << result.output;
  EXPECT_EQ(lines[4].rfind("5: 682 points, the first ", 0), 0u) << lines[4];
}

TEST(FirstScanTest, IsWhatReadmeShows) {
  const std::string readme = readFile(SOURCE_PATH "/README.md");
  const std::string source = readFile(SOURCE_PATH "/examples/first_scan.cpp");
  ASSERT_NE(source, "");
  EXPECT_NE(readme.find("```cpp\n" + source + "```\n"), std::string::npos)
      << "the code in README.md and examples/first_scan.cpp differ";
}
