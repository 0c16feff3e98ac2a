// The link over a real line: time-outs, and SCIP 1.x exchanges.
#include "tarvolink/scip/cTarvoLink.h"

#include <gtest/gtest.h>

#include "tarvolink/scip/cSCIPError.h"
#include "tests/scip/cRig.h"
#include "tests/support/syscalls.h"

namespace {

struct cHeard {
  std::string text;
  int error;
};

// Would catch a record that waits twice for a sensor that fell silent, and one that is not over.
TEST(Link, waitsOnceForASensorThatFellSilent) {
  for (const auto& [text, error] :
       {cHeard{"", 0x1}, cHeard{"V", 0x2}, cHeard{"VV\n", 0x2}, cHeard{"VV\n0", 0x4},
        cHeard{"VV\n0\nabc", 0x4}, cHeard{"VV\n0\nabc\n", 0x4}}) {
    cRig rig(keepSilent, 60);
    rig.cable.send(text);
    ASSERT_TRUE(rig.cable.waitUntilWaiting(static_cast<int>(text.size())));
    const int before = syscalls::silentPolls;
    EXPECT_FALSE(rig.link->recvRecord());
    EXPECT_EQ(rig.link->record.error, error) << text;
    EXPECT_EQ(syscalls::silentPolls, before + 1) << text;
    rig.port->readTimeout = PATIENCE;
    rig.cable.send("VV\n0\n\n");
    EXPECT_TRUE(rig.link->recvRecord()) << "the next one reads normally";
    EXPECT_EQ(rig.link->record.echo, "VV");
  }
}

// Would catch a refusal or another command's answer taken for success, or an answer for none.
TEST(Link, tellsWhatTheSensorSaid) {
  for (const auto& [text, error] :
       {cHeard{"V\n0\nVEND:x;\n\n", 0x400}, cHeard{"V\n9\n\n", 0x409}, cHeard{"V\n0\nVEND", 0x400},
        cHeard{"V\n10\n\n", 0x10}, cHeard{"V\nx\n\n", 0x10}, cHeard{"V\n\n\n", 0x10},
        cHeard{"V\n", 0x10}, cHeard{"X\n0\n\n", 0x8}, cHeard{"VV\n0\n\n", 0x8},
        cHeard{"V\r\n0\r\n\r\n\n", 0x8}, cHeard{"", 0x8}}) {
    cRig rig([said = text](const std::string&) { return said; }, 300);
    EXPECT_EQ(rig.link->doRaw1("V"), error) << text;
    EXPECT_EQ(rig.link->record.error, error);
    EXPECT_EQ(rig.link->record.command, "V");
    EXPECT_EQ(rig.link->lastRawCommand, "V");
    EXPECT_TRUE(rig.link->stream->good());
    EXPECT_EQ(rig.peer.waitLines(1), std::vector<std::string>{"V"});
  }
}

// Would catch a code word read as success.
TEST(SCIPError, tellsSuccessFromEverythingElse) {
  EXPECT_EQ(cSCIPError::getErrorString(0, "detail"), "Success");
  EXPECT_EQ(cSCIPError::getErrorString(0x400, ""), "Error String Not implemented yet.");
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

}  // namespace
