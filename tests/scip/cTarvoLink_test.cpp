// The link over a real line: time-outs, and SCIP 1.x exchanges.
#include "tarvolink/scip/cTarvoLink.h"

#include <gtest/gtest.h>

#include "tarvolink/scip/cSCIPError.h"
#include "tests/support/cCaseName.h"
#include "tests/support/cPtyPair.h"
#include "tests/support/cScriptedPeer.h"
#include "tests/support/syscalls.h"

namespace {

using tPort = kavTBX::basic_portbuf<char>;

/// A link whose reads wait for `timeout` milliseconds.
struct cRig {
  explicit cRig(int timeout)
      : port(new tPort(cable.getPath(), boost::shared_ptr<kavTBX::cPortSetting>())), link(port) {
    port->readTimeout = timeout;
  }

  cPtyPair cable;
  boost::shared_ptr<tPort> port;
  cTarvoLink link;
};

struct cUnfinished {
  const char* name;
  const char* input;
  int error;
};

class LinkTimeout : public testing::TestWithParam<cUnfinished> {};

// Would catch a record that waits twice for a sensor that fell silent, and one that is not over.
TEST_P(LinkTimeout, isWaitedForOnce) {
  cRig rig(60);
  rig.cable.send(GetParam().input);
  ASSERT_TRUE(rig.cable.waitUntilWaiting(static_cast<int>(std::string(GetParam().input).size())));
  const int before = syscalls::silentPolls;
  EXPECT_FALSE(rig.link.recvRecord());
  EXPECT_EQ(rig.link.record.error, GetParam().error);
  EXPECT_EQ(syscalls::silentPolls, before + 1);
  rig.port->readTimeout = 8000;
  rig.cable.send("VV\n0\n\n");
  EXPECT_TRUE(rig.link.recvRecord()) << "the next one reads normally";
  EXPECT_EQ(rig.link.record.echo, "VV");
}

INSTANTIATE_TEST_SUITE_P(Link, LinkTimeout,
                         testing::Values(cUnfinished{"silence", "", 0x1},
                                         cUnfinished{"unfinishedEcho", "V", 0x2},
                                         cUnfinished{"noStatus", "VV\n", 0x2},
                                         cUnfinished{"unfinishedStatus", "VV\n0", 0x4},
                                         cUnfinished{"unfinishedBody", "VV\n0\nabc", 0x4},
                                         cUnfinished{"noEmptyLine", "VV\n0\nabc\n", 0x4}),
                         cCaseName());

struct cExchange {
  const char* name;
  const char* answer;
  int error;
};

class LinkExchange : public testing::TestWithParam<cExchange> {};

TEST_P(LinkExchange, tellsWhatTheSensorSaid) {
  cRig rig(300);
  cScriptedPeer peer(rig.cable, [](const std::string&) { return GetParam().answer; });
  const int& error = rig.link.doRaw1("V");
  EXPECT_EQ(error, GetParam().error);
  EXPECT_EQ(&error, &rig.link.record.error);
  EXPECT_EQ(rig.link.record.command, "V");
  EXPECT_EQ(rig.link.lastRawCommand, "V");
  EXPECT_TRUE(rig.link.stream->good());
  EXPECT_EQ(peer.waitLines(1), std::vector<std::string>{"V"});
}

INSTANTIATE_TEST_SUITE_P(Link, LinkExchange,
                         testing::Values(cExchange{"good", "V\n0\nVEND:x;\n\n", 0x400},
                                         cExchange{"refused", "V\n9\n\n", 0x409},
                                         cExchange{"goodButUnfinished", "V\n0\nVEND", 0x400},
                                         cExchange{"twoDigits", "V\n10\n\n", 0x10},
                                         cExchange{"letter", "V\nx\n\n", 0x10},
                                         cExchange{"sign", "V\n+\n\n", 0x10},
                                         cExchange{"emptyStatus", "V\n\n\n", 0x10},
                                         cExchange{"noStatus", "V\n", 0x10},
                                         cExchange{"otherEcho", "X\n0\n\n", 0x8},
                                         cExchange{"longerEcho", "VV\n0\n\n", 0x8},
                                         cExchange{"carriageReturns", "V\r\n0\r\n\r\n\n", 0x8},
                                         cExchange{"silence", "", 0x8}),
                         cCaseName());

TEST(SCIPError, tellsSuccessFromEverythingElse) {
  EXPECT_EQ(cSCIPError::getErrorString(0, "detail"), "Success");
  EXPECT_EQ(cSCIPError::getErrorString(0x400, ""), "Error String Not implemented yet.");
  EXPECT_EQ(&cSCIPError::getErrorString(0, ""), &cSCIPError::successStr());
  EXPECT_EQ(&cSCIPError::getErrorString(1, ""), &cSCIPError::notYetStr());
}

// Would catch a link that, once a write failed, is silent for ever.
TEST(Link, goesOnAfterItsCableWasPulled) {
  cRig rig(50);
  rig.cable.hangUp();
  testing::internal::CaptureStderr();
  EXPECT_EQ(rig.link.doRaw1("V"), 0x8);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "basic_portbuf::write: Input/output error\n");
  EXPECT_TRUE(rig.link.stream->good());
}

TEST(Link, leavesItsOwnRecordAloneWhenAnotherIsGiven) {
  cRig rig(8000);
  rig.cable.send("VV\n0\nbody\n\n");
  cSCIPRecord record;
  EXPECT_TRUE(rig.link.recvRecord(record));
  EXPECT_EQ(record.body, "body\n");
  EXPECT_EQ(rig.link.record.echo, "");
  const auto now = boost::posix_time::microsec_clock::local_time();
  EXPECT_LT(now - record.time, boost::posix_time::seconds(10));
  EXPECT_LE(record.time, now);
}

}  // namespace
