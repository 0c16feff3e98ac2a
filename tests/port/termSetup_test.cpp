// What a cPortSetting makes of the line's attributes.
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "tarvolink/port/basic_portbuf.h"
#include "tests/support/cCaseName.h"
#include "tests/support/cPtyPair.h"
#include "tests/support/driving.h"
#include "tests/support/syscalls.h"

namespace {

using kavTBX::cPortSetting;

/// Sets the line up; what is said about it on standard error.
std::string setUp(const tPort& port, const cPortSetting& wanted, bool succeeds) {
  const auto setting = boost::make_shared<cPortSetting>(wanted);
  return outputOf([&] { EXPECT_EQ(port->termSetup(setting), succeeds); }).err;
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

struct cLine {
  const char* name;
  cPortSetting wanted;
  speed_t speed;
  tcflag_t control = CS8;  // beside the speed, of the bits that are not left alone
  const char* complaint = "";
};

class TermSetup : public testing::TestWithParam<cLine> {};

TEST_P(TermSetup, setsWhatIsToldAndLeavesTheRest) {
  const cLine& expected = GetParam();
  cPtyPair cable;
  const termios saved = makePeculiar(cable);
  const tPort port = openPort(cable.getPath());
  setUp(port, {115200, 8, 2, 1, true, true}, true);  // to start over from
  EXPECT_EQ(setUp(port, expected.wanted, true), expected.complaint);
  const termios& got = syscalls::wanted;
  const bool soft = expected.wanted.softFlowControl;
  constexpr tcflag_t SPEED_0_MARK = 020000000000;  // glibc's own, for cfsetspeed(B0)
  EXPECT_EQ(got.c_iflag & ~SPEED_0_MARK, IXOFF | INLCR | IGNCR | IGNPAR | (soft ? IXON : 0u));
  EXPECT_EQ(got.c_oflag, static_cast<tcflag_t>(ONLCR));
  EXPECT_EQ(got.c_lflag, static_cast<tcflag_t>(ECHOE | IEXTEN));
  constexpr tcflag_t CHANGED = CSIZE | CSTOPB | PARENB | CRTSCTS | CBAUD | CBAUDEX;
  tcflag_t control = (saved.c_cflag & ~CHANGED) | expected.control | expected.speed;
  if (expected.wanted.parity != 0 && expected.wanted.parity != 2) {
    control = PARODD | expected.control;  // of the whole word that one bit stays
  }
  EXPECT_EQ(got.c_cflag, control);
  EXPECT_EQ(cfgetispeed(&got), cfgetospeed(&got));
  EXPECT_EQ(got.c_cc[VMIN], 3);
  EXPECT_EQ(got.c_cc[VTIME], 7);
  EXPECT_EQ(syscalls::when, TCSADRAIN);
}

constexpr auto UNKNOWN = "PortSetting:: Invalid Baud Rate : 4800\n";

INSTANTIATE_TEST_SUITE_P(
    Port, TermSetup,
    testing::Values(cLine{"default", {}, B115200}, cLine{"at9600", {9600}, B9600},
                    cLine{"at19200", {19200}, B19200}, cLine{"at38400", {38400}, B38400},
                    cLine{"at57600", {57600}, B57600}, cLine{"at230400", {230400}, B230400},
                    cLine{"at460800", {460800}, B460800}, cLine{"at500000", {500000}, B500000},
                    cLine{"unknownSpeed", {4800}, B0, CS8, UNKNOWN},
                    cLine{"sevenBits", {9600, 7}, B9600, CS7},
                    cLine{"twoStopBits", {9600, 8, 2}, B9600, CS8 | CSTOPB},
                    cLine{"oddParity", {9600, 8, 1, 2}, B9600, CS8 | PARENB},
                    cLine{"other", {9600, 8, 2, 1, false, true}, B0, CRTSCTS | CSTOPB},
                    cLine{"softFlow", {9600, 8, 1, 0, true}, B9600},
                    cLine{"hardFlow", {9600, 8, 1, 0, false, true}, B9600, CS8 | CRTSCTS}),
    cCaseName());

// Would catch a port left half set up, or one that reads what was sent at the old settings; a speed
// change that is reported as done while the driver still talks at the old one.
TEST(TermSetupRefusal, leavesTheLineButFlushed) {
  cPtyPair cable;
  const tPort port = openPort(cable.getPath());
  const std::string length = "basic_portbuf::Invalid character length:";
  for (const auto& [wanted, complaint] : std::vector<std::pair<cPortSetting, std::string>>{
           {{115200, 6}, length + "6\n"},
           {{115200, 8, 0}, "basic_portbuf::Invalid stop bit length:0\n"},
           {{-1, 9}, "PortSetting:: Invalid Baud Rate : -1\n" + length + "9\n"}}) {
    cable.send("old");
    ASSERT_TRUE(cable.waitUntilWaiting(3));
    const int before = syscalls::settings;
    EXPECT_EQ(setUp(port, wanted, false), complaint);
    EXPECT_EQ(syscalls::settings, before);
    EXPECT_EQ(cable.countWaiting(), 0);
  }
  syscalls::refuses = true;
  EXPECT_EQ(setUp(port, {19200}, false), "");
  syscalls::refuses = false;
  EXPECT_EQ(setUp(port, {19200}, true), "") << "it stays usable";
}

}  // namespace
