// What a cPortSetting makes of the line's attributes.
#include <gtest/gtest.h>

#include "tarvolink/port/basic_portbuf.h"
#include "tests/support/cCaseName.h"
#include "tests/support/cPtyPair.h"
#include "tests/support/syscalls.h"

namespace {

using kavTBX::cPortSetting;
using tPort = kavTBX::basic_portbuf<char>;

boost::shared_ptr<cPortSetting> share(const cPortSetting& setting) {
  return boost::shared_ptr<cPortSetting>(new cPortSetting(setting));
}

cPortSetting setting(int baud, int bits = 8, int stops = 1, int parity = 0, bool soft = false,
                     bool hard = false) {
  cPortSetting made;
  made.baudRate = baud;
  made.charLength = bits;
  made.stopBits = stops;
  made.parity = parity;
  made.softFlowControl = soft;
  made.hardFlowControl = hard;
  return made;
}

/// A line whose attributes are all that raw mode must change, and some that it must not.
termios makePeculiar(const cPtyPair& cable) {
  termios attributes = cable.getAttributes();
  attributes.c_iflag = BRKINT | ISTRIP | ICRNL | IXON | IXOFF | INLCR | IGNCR;
  attributes.c_oflag = OPOST | ONLCR;
  attributes.c_lflag = ISIG | ICANON | ECHO | ECHOE | IEXTEN;
  attributes.c_cflag |= CSTOPB | CRTSCTS | PARODD | CLOCAL | HUPCL | CREAD;
  attributes.c_cc[VMIN] = 3;
  attributes.c_cc[VTIME] = 7;
  cfsetspeed(&attributes, B38400);
  tcsetattr(cable.getSlave(), TCSANOW, &attributes);
  return cable.getAttributes();
}

constexpr tcflag_t CHANGED_CONTROL = CSIZE | CSTOPB | PARENB | CRTSCTS | CBAUD | CBAUDEX;

struct cCase {
  const char* name;
  cPortSetting wanted;
  speed_t speed;
  tcflag_t control;  // the bits of CHANGED_CONTROL expected beside the speed
  const char* complaint;
};

class TermSetup : public testing::TestWithParam<cCase> {};

TEST_P(TermSetup, setsWhatIsToldAndLeavesTheRest) {
  const cCase& expected = GetParam();
  cPtyPair cable;
  const termios saved = makePeculiar(cable);
  tPort port(cable.getPath(), share(setting(115200, 8, 2, 1, true, true)));  // to start over from
  testing::internal::CaptureStderr();
  EXPECT_TRUE(port.termSetup(share(expected.wanted)));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), expected.complaint);
  const termios& got = syscalls::wanted;
  const bool soft = expected.wanted.softFlowControl;
  constexpr tcflag_t SPEED_0_MARK = 020000000000;  // glibc's own, for cfsetspeed(B0)
  EXPECT_EQ(got.c_iflag & ~SPEED_0_MARK, IXOFF | INLCR | IGNCR | IGNPAR | (soft ? IXON : 0u));
  EXPECT_EQ(got.c_oflag, static_cast<tcflag_t>(ONLCR));
  EXPECT_EQ(got.c_lflag, static_cast<tcflag_t>(ECHOE | IEXTEN));
  tcflag_t control = (saved.c_cflag & ~CHANGED_CONTROL) | expected.control | expected.speed;
  if (expected.wanted.parity != 0 && expected.wanted.parity != 2) {
    control = PARODD | expected.control;  // of the whole word that one bit stays
  }
  EXPECT_EQ(got.c_cflag, control);
  EXPECT_EQ(cfgetispeed(&got), cfgetospeed(&got));
  EXPECT_EQ(got.c_cc[VMIN], 3);
  EXPECT_EQ(got.c_cc[VTIME], 7);
  EXPECT_EQ(syscalls::when, TCSADRAIN);
}

INSTANTIATE_TEST_SUITE_P(
    Port, TermSetup,
    testing::Values(
        cCase{"default", cPortSetting(), B115200, CS8, ""},
        cCase{"at9600", setting(9600), B9600, CS8, ""},
        cCase{"at19200", setting(19200), B19200, CS8, ""},
        cCase{"at38400", setting(38400), B38400, CS8, ""},
        cCase{"at57600", setting(57600), B57600, CS8, ""},
        cCase{"at230400", setting(230400), B230400, CS8, ""},
        cCase{"at460800", setting(460800), B460800, CS8, ""},
        cCase{"at500000", setting(500000), B500000, CS8, ""},
        cCase{"unknownSpeed", setting(4800), B0, CS8, "PortSetting:: Invalid Baud Rate : 4800\n"},
        cCase{"negativeSpeed", setting(-1), B0, CS8, "PortSetting:: Invalid Baud Rate : -1\n"},
        cCase{"sevenBits", setting(115200, 7), B115200, CS7, ""},
        cCase{"twoStopBits", setting(115200, 8, 2), B115200, CS8 | CSTOPB, ""},
        cCase{"oddParity", setting(115200, 8, 1, 2), B115200, CS8 | PARENB, ""},
        cCase{"otherParity", setting(115200, 8, 2, 1, false, true), B115200, CRTSCTS | CSTOPB, ""},
        cCase{"softFlow", setting(115200, 8, 1, 0, true), B115200, CS8, ""},
        cCase{"hardFlow", setting(115200, 8, 1, 0, false, true), B115200, CS8 | CRTSCTS, ""}),
    cCaseName());

struct cRefusal {
  const char* name;
  cPortSetting wanted;
  const char* complaint;
};

class TermSetupRefusal : public testing::TestWithParam<cRefusal> {};

// Would catch a port left half set up, or one that reads what was sent at the old settings.
TEST_P(TermSetupRefusal, leavesTheLineButFlushed) {
  cPtyPair cable;
  tPort port(cable.getPath(), share(cPortSetting()));
  cable.send("old");
  ASSERT_TRUE(cable.waitUntilWaiting(3));
  const int before = syscalls::settings;
  testing::internal::CaptureStderr();
  EXPECT_FALSE(port.termSetup(share(GetParam().wanted)));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), GetParam().complaint);
  EXPECT_EQ(syscalls::settings, before);
  EXPECT_EQ(cable.countWaiting(), 0);
  EXPECT_TRUE(port.termSetup(share(cPortSetting()))) << "it stays usable";
}

INSTANTIATE_TEST_SUITE_P(Port, TermSetupRefusal,
                         testing::Values(cRefusal{"sixBits", setting(115200, 6),
                                                  "basic_portbuf::Invalid character length:6\n"},
                                         cRefusal{"noStopBit", setting(115200, 8, 0),
                                                  "basic_portbuf::Invalid stop bit length:0\n"},
                                         cRefusal{"speedAndLength", setting(1, 9),
                                                  "PortSetting:: Invalid Baud Rate : 1\n"
                                                  "basic_portbuf::Invalid character length:9\n"}),
                         cCaseName());

// Would catch a speed change that is reported as done while the driver still talks at the old one.
TEST(TermSetupFailure, ofTheSystemCallIsTold) {
  cPtyPair cable;
  tPort port(cable.getPath(), share(cPortSetting()));
  syscalls::refuses = true;
  EXPECT_FALSE(port.termSetup(share(setting(19200))));
  syscalls::refuses = false;
  EXPECT_TRUE(port.termSetup(share(setting(19200))));
}

}  // namespace
