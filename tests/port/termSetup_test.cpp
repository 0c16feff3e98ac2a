// What a cPortSetting makes of the line's attributes.

#include <boost/make_shared.hpp>

#include "tests/support/cPtyPair.h"
#include "tests/support/syscalls.h"

namespace {

using kavTBX::cPortSetting;

/// Sets the line up; returns what it prints on standard error.
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
  cfsetspeed(&attributes, B38400);
  tcsetattr(cable.getSlave(), TCSANOW, &attributes);
  return cable.getAttributes();
}

// Catches: a line that garbles what the sensor sends, or a user's settings changed beyond need.
TEST(TermSetup, SetsWhatIsGivenAndLeavesTheRest) {
  struct cRow {
    cPortSetting wanted;
    speed_t speed;
    tcflag_t control = CS8;  // beside the speed, of the bits that are not left alone
    const char* complaint = "";
  };
  cPtyPair cable;
  const termios saved = makePeculiar(cable);
  const tPort port = openPort(cable.getPath());
  for (const cRow& row :
       {cRow{{}, B115200}, cRow{{9600}, B9600}, cRow{{19200}, B19200}, cRow{{38400}, B38400},
        cRow{{57600}, B57600}, cRow{{230400}, B230400}, cRow{{460800}, B460800},
        cRow{{500000}, B500000}, cRow{{9600, 7, 2}, B9600, CS7 | CSTOPB},
        cRow{{4800}, B0, CS8, "PortSetting:: Invalid Baud Rate : 4800\n"},
        cRow{{9600, 8, 1, 2}, B9600, CS8 | PARENB},
        cRow{{9600, 8, 2, 1, false, true}, B0, CRTSCTS | CSTOPB},
        cRow{{9600, 8, 1, 0, true}, B9600},
        cRow{{9600, 8, 1, 0, false, true}, B9600, CS8 | CRTSCTS}}) {
    EXPECT_EQ(setUp(port, row.wanted, true), row.complaint);
    const termios& got = syscalls::wanted;
    constexpr tcflag_t CHANGED = CSIZE | CSTOPB | PARENB | CRTSCTS | CBAUD | CBAUDEX;
    EXPECT_EQ(got.c_iflag & 0xFFFFu,  // glibc marks B0 above
              IXOFF | INLCR | IGNCR | IGNPAR | (row.wanted.softFlowControl ? IXON : 0u));
    EXPECT_EQ(got.c_oflag, static_cast<tcflag_t>(ONLCR));
    EXPECT_EQ(got.c_lflag, static_cast<tcflag_t>(ECHOE | IEXTEN));
    // An odd parity setting leaves one bit of the word.
    const tcflag_t kept = row.wanted.parity == 1 ? PARODD : saved.c_cflag & ~CHANGED;
    EXPECT_EQ(got.c_cflag, kept | row.control | row.speed);
    EXPECT_EQ(cfgetispeed(&got), cfgetospeed(&got));
    EXPECT_EQ(syscalls::when, TCSADRAIN);
  }
}

// Catches: a port left half set up, or one that reads what was sent at the old settings; a speed
// change that is reported as done while the driver still talks at the old one.
TEST(TermSetup, FlushesTheLineAndChangesNothingMoreOnRefusal) {
  cPtyPair cable;
  const tPort port = openPort(cable.getPath());
  const std::string length = "basic_portbuf::Invalid character length:";
  for (const auto& [wanted, complaint] : std::vector<std::pair<cPortSetting, std::string>>{
           {{115200, 8, 0}, "basic_portbuf::Invalid stop bit length:0\n"},
           {{-1, 9}, "PortSetting:: Invalid Baud Rate : -1\n" + length + "9\n"}}) {
    cable.send("old");
    ASSERT_TRUE(cable.waitUntilWaiting(3));
    const int before = syscalls::settings;
    EXPECT_EQ(setUp(port, wanted, false), complaint);
    EXPECT_EQ(syscalls::settings, before);
    EXPECT_EQ(cable.countWaiting(), 0);
  }
  syscalls::failNth("tcsetattr", 1);
  EXPECT_EQ(setUp(port, {19200}, false), "");
  EXPECT_EQ(setUp(port, {19200}, true), "") << "it stays usable";
}

}  // namespace
