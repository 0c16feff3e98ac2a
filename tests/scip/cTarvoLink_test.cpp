// The link over a real line: time-outs, and SCIP 1.x exchanges.
#include "tests/support/cScriptedSensor.h"
#include "tests/support/syscalls.h"

namespace {

struct cRow {
  std::string text;
  int error;
};

/// A link to which these bytes have come.
struct cLine {
  explicit cLine(const std::string& text) {
    sensor.inject(text);
    EXPECT_TRUE(sensor.waitFor(&cSimCounters::bytesWritten, text.size(), LONG_TIME));
  }
  cScriptedSensor sensor{keepSilent};
  const tLink link = openLink(sensor.getPath(), 60);
};

// Catches: a record that waits twice for a sensor that fell silent, or that is not over.
TEST(Link, WaitsOnceForASensorThatFellSilent) {
  for (const auto& [text, error] :
       {cRow{"", 0x1}, cRow{"V", 0x2}, cRow{"VV\n", 0x2}, cRow{"VV\n0", 0x4},
        cRow{"VV\n0\nabc", 0x4}, cRow{"VV\n0\nabc\n", 0x4}}) {
    cLine line(text);
    const tLink& link = line.link;
    const int before = syscalls::silentPolls;
    EXPECT_FALSE(link->recvRecord());
    EXPECT_EQ(link->record.error, error) << text;
    EXPECT_EQ(syscalls::silentPolls, before + 1) << text;
    link->portbuf->readTimeout = LONG;
    line.sensor.inject("VV\n0\n\n");
    EXPECT_TRUE(link->recvRecord()) << "the next one reads normally";
    EXPECT_EQ(link->record.echo, "VV");
  }
}

// Catches: a refusal or another command's answer taken for success, or an answer for none.
TEST(Link, ReportsWhatTheSensorAnswered) {
  for (const auto& [text, error] :
       {cRow{"V\n0\nVEND:x;\n\n", 0x400}, cRow{"V\n9\n\n", 0x409}, cRow{"V\n0\nVEND", 0x400},
        cRow{"V\n10\n\n", 0x10}, cRow{"V\nx\n\n", 0x10}, cRow{"V\n\n\n", 0x10}, cRow{"V\n", 0x10},
        cRow{"X\n0\n\n", 0x8}, cRow{"VV\n0\n\n", 0x8}, cRow{"V\r\n0\r\n\r\n\n", 0x8},
        cRow{"", 0x8}}) {
    cLine line(text);
    const tLink& link = line.link;
    EXPECT_EQ(link->doRaw1("V"), error) << text;
    EXPECT_EQ(link->record.error, error);
    EXPECT_EQ(link->record.command + link->lastRawCommand, "VV");
    EXPECT_TRUE(link->stream->good());
    EXPECT_EQ(line.sensor.waitLines(1), tLines{"V"});
  }
}

}  // namespace
