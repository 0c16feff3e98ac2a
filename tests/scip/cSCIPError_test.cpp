#include "tarvolink/scip/cSCIPError.h"

#include <gtest/gtest.h>

TEST(SCIPError, tellsSuccessFromEverythingElse) {
  EXPECT_EQ(cSCIPError::getErrorString(0, "detail"), "Success");
  for (const int code : {cSCIPError::ESCIP1_STATUS, cSCIPError::ETIMEOUT_ECHO, -1}) {
    EXPECT_EQ(cSCIPError::getErrorString(code, ""), "Error String Not implemented yet.");
  }
  EXPECT_EQ(&cSCIPError::getErrorString(0, ""), &cSCIPError::successStr());
  EXPECT_EQ(&cSCIPError::getErrorString(1, ""), &cSCIPError::notYetStr());
}

// Would catch a mark moved under the mask, and so read as a sensor's status.
TEST(SCIPError, codeWordsAreThoseThatHostsKnow) {
  EXPECT_EQ(cSCIPError::ETIMEOUT_ECHO, 0x0001);
  EXPECT_EQ(cSCIPError::ETIMEOUT_STAT, 0x0002);
  EXPECT_EQ(cSCIPError::ETIMEOUT_BODY, 0x0004);
  EXPECT_EQ(cSCIPError::EINVALID_ECHO, 0x0008);
  EXPECT_EQ(cSCIPError::EINVALID_STATUS, 0x0010);
  EXPECT_EQ(cSCIPError::ESCIP1_STATUS, 0x0400);
  EXPECT_EQ(cSCIPError::ESCIP2_STATUS, 0x0800);
  EXPECT_EQ(cSCIPError::ESCIP2_EXTSTATUS, 0x1000);
  EXPECT_EQ(cSCIPError::ESTATUS_MASK, 0x03FF);
}
