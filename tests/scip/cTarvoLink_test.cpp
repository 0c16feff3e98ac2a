// The link over a real line: time-outs, and SCIP 1.x exchanges.
#include "tarvolink/scip/cTarvoLink.h"

#include <gtest/gtest.h>

#include "tarvolink/scip/cSCIPError.h"
#include "tests/scip/cRig.h"
#include "tests/support/cCaseName.h"
#include "tests/support/syscalls.h"

namespace {

struct cHeard {
  const char* name;
  const char* text;
  int error;
};

class LinkTimeout : public testing::TestWithParam<cHeard> {};

// Would catch a record that waits twice for a sensor that fell silent, and one that is not over.
TEST_P(LinkTimeout, isWaitedForOnce) {
  cRig rig(keepSilent, 60);
  const std::string text = GetParam().text;
  rig.cable.send(text);
  ASSERT_TRUE(rig.cable.waitUntilWaiting(static_cast<int>(text.size())));
  const int before = syscalls::silentPolls;
  EXPECT_FALSE(rig.link->recvRecord());
  EXPECT_EQ(rig.link->record.error, GetParam().error);
  EXPECT_EQ(syscalls::silentPolls, before + 1);
  rig.port->readTimeout = PATIENCE;
  rig.cable.send("VV\n0\n\n");
  EXPECT_TRUE(rig.link->recvRecord()) << "the next one reads normally";
  EXPECT_EQ(rig.link->record.echo, "VV");
}

INSTANTIATE_TEST_SUITE_P(Link, LinkTimeout,
                         testing::Values(cHeard{"silence", "", 0x1},
                                         cHeard{"unfinishedEcho", "V", 0x2},
                                         cHeard{"noStatus", "VV\n", 0x2},
                                         cHeard{"unfinishedStatus", "VV\n0", 0x4},
                                         cHeard{"unfinishedBody", "VV\n0\nabc", 0x4},
                                         cHeard{"noEmptyLine", "VV\n0\nabc\n", 0x4}),
                         cCaseName());

class LinkExchange : public testing::TestWithParam<cHeard> {};

TEST_P(LinkExchange, tellsWhatTheSensorSaid) {
  cRig rig([](const std::string&) { return GetParam().text; }, 300);
  const int& error = rig.link->doRaw1("V");
  EXPECT_EQ(error, GetParam().error);
  EXPECT_EQ(&error, &rig.link->record.error);
  EXPECT_EQ(rig.link->record.command, "V");
  EXPECT_EQ(rig.link->lastRawCommand, "V");
  EXPECT_TRUE(rig.link->stream->good());
  EXPECT_EQ(rig.peer.waitLines(1), std::vector<std::string>{"V"});
}

INSTANTIATE_TEST_SUITE_P(
    Link, LinkExchange,
    testing::Values(cHeard{"good", "V\n0\nVEND:x;\n\n", 0x400},
                    cHeard{"refused", "V\n9\n\n", 0x409},
                    cHeard{"goodButUnfinished", "V\n0\nVEND", 0x400},
                    cHeard{"twoDigits", "V\n10\n\n", 0x10}, cHeard{"letter", "V\nx\n\n", 0x10},
                    cHeard{"sign", "V\n+\n\n", 0x10}, cHeard{"emptyStatus", "V\n\n\n", 0x10},
                    cHeard{"noStatus", "V\n", 0x10}, cHeard{"otherEcho", "X\n0\n\n", 0x8},
                    cHeard{"longerEcho", "VV\n0\n\n", 0x8},
                    cHeard{"carriageReturns", "V\r\n0\r\n\r\n\n", 0x8}, cHeard{"silence", "", 0x8}),
    cCaseName());

TEST(SCIPError, tellsSuccessFromEverythingElse) {
  EXPECT_EQ(cSCIPError::getErrorString(0, "detail"), "Success");
  EXPECT_EQ(cSCIPError::getErrorString(0x400, ""), "Error String Not implemented yet.");
  EXPECT_EQ(&cSCIPError::getErrorString(0, ""), &cSCIPError::successStr());
  EXPECT_EQ(&cSCIPError::getErrorString(1, ""), &cSCIPError::notYetStr());
}

// Would catch a link that, once a write failed, is silent for ever.
TEST(Link, goesOnAfterItsCableWasPulled) {
  cRig rig(keepSilent);
  rig.hangUp();
  testing::internal::CaptureStderr();
  EXPECT_EQ(rig.link->doRaw1("V"), 0x8);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "basic_portbuf::write: Input/output error\n");
  EXPECT_TRUE(rig.link->stream->good());
}

TEST(Link, leavesItsOwnRecordAloneWhenAnotherIsGiven) {
  cRig rig(keepSilent, PATIENCE);
  rig.cable.send("VV\n0\nbody\n\n");
  cSCIPRecord record;
  EXPECT_TRUE(rig.link->recvRecord(record));
  EXPECT_EQ(record.body, "body\n");
  EXPECT_EQ(rig.link->record.echo, "");
  const auto now = boost::posix_time::microsec_clock::local_time();
  EXPECT_LE(record.time, now);
  EXPECT_LT(now - record.time, boost::posix_time::seconds(10));
}

}  // namespace
