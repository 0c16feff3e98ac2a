#include <gtest/gtest.h>

#include "tarvolink/scip2/cSCIP2Comm.h"
#include "tests/support/cCaseName.h"
#include "tests/support/cScriptedPeer.h"

namespace {

struct cLine {
  const char* name;
  std::string line;
  bool hasSemicolon;
  bool isValid;
  std::string left;
};

class ValidateLine : public testing::TestWithParam<cLine> {};

TEST_P(ValidateLine, looksAtTheSumAndStripsIt) {
  std::string line = GetParam().line;
  EXPECT_EQ(cSCIP2Comm::validateLine(line, GetParam().hasSemicolon), GetParam().isValid);
  EXPECT_EQ(line, GetParam().left);
}

std::string sum(const std::string& text) { return std::string(1, cScriptedPeer::sum(text)); }

const std::string HIGH = "\x80\xFF\xE9";
const std::string NULS(2, '\0');

INSTANTIATE_TEST_SUITE_P(
    Comm, ValidateLine,
    testing::Values(
        cLine{"status", "00P", false, true, "00"}, cLine{"lineFeed", "00P\n", false, true, "00"},
        cLine{"oneLineFeedOnly", "00P\n\n", false, false, "00P"},
        cLine{"wrong", "00Q", false, false, "00"}, cLine{"scan", "99b", false, true, "99"},
        cLine{"tooShort", "0P", false, false, "0P"}, cLine{"one", "P\n", false, false, "P"},
        cLine{"keyAndValue", "ABC;" + sum("ABC"), true, true, "ABC"},
        cLine{"keyWithoutSemicolon", "ABC" + sum("ABC"), true, true, "ABC"},
        cLine{"semicolonSummed", "ABC;" + sum("ABC;"), false, true, "ABC;"},
        cLine{"semicolonNotSummed", "ABC;" + sum("ABC;"), true, false, "ABC"},
        cLine{"semicolonInside", "A;C" + sum("A;C"), true, true, "A;C"},
        cLine{"highBytes", HIGH + sum(HIGH), false, true, HIGH},
        cLine{"highSum", "00\xD0", false, false, "00"},
        cLine{"nulBytes", NULS + "0", false, true, NULS}),
    cCaseName());

TEST(ValidateLineFailure, isRaisedForAnEmptyLine) {
  for (const char* const text : {"", "\n"}) {
    std::string line = text;
    EXPECT_THROW(cSCIP2Comm::validateLine(line, false), std::out_of_range);
  }
}

}  // namespace
