// Opening, reading, writing and closing a port.
#include "tarvolink/port/basic_portbuf.h"

#include <sys/time.h>

#include <boost/make_shared.hpp>

#include "tarvolink/port/basic_portstream.h"
#include "tests/support/cPtyPair.h"

namespace {

using kavTBX::cPortSetting;

/// A port whose protected operations a test can call.
class cPort : public kavTBX::basic_portbuf<char> {
 public:
  using kavTBX::basic_portbuf<char>::basic_portbuf;
  using kavTBX::basic_portbuf<char>::underflow;
  using kavTBX::basic_portbuf<char>::overflow;
};

constexpr int END = std::char_traits<char>::eof();

/// No wait, and nothing is written.
void expectDeadEnd(cPort& port) {
  EXPECT_LT(measure([&] { EXPECT_EQ(port.sgetc(), END); }), port.readTimeout);
  EXPECT_TRUE(port.isExhausted());
  EXPECT_EQ(port.sputn("x", 1), 0);
}

// Catches: a wait for a device that is not there, and a setting tried on what takes none.
TEST(PortOpening, ReportsWhatIsNoTerminalAndIsUnusable) {
  std::unique_ptr<cPort> port;
  EXPECT_EQ(outputOf([&] { port.reset(new cPort("/nowhere/tty", {})); }).err,
            "basic_portbuf::c'tor: No such file or directory\n");
  EXPECT_FALSE(port->isTerminal());
  expectDeadEnd(*port);
  EXPECT_EQ(port->overflow('x'), 'x');
  EXPECT_EQ(port->overflow(END), 0);
  EXPECT_EQ(outputOf([&] { port.reset(new cPort("/dev/zero", {})); }).err,
            "basic_portbuf::c'tor::tcgetattr: Inappropriate ioctl for device\n");
  EXPECT_FALSE(port->isTerminal());
  EXPECT_FALSE(port->termSetup(boost::make_shared<cPortSetting>()));
  cPtyPair cable;
  cPort refused(cable.getPath(), boost::make_shared<cPortSetting>(cPortSetting{115200, 8, 3}));
  EXPECT_FALSE(refused.termSetup(boost::make_shared<cPortSetting>()));
}

// Catches: a descriptor leaked to the host's children or to the rest of the process's life.
TEST(PortClosing, HappensOnExecAndWithItsEndOrAnEndOfFile) {
  cPtyPair cable;
  const int next = dup(cable.getSlave());
  close(next);
  auto* const owned = new cPort(cable.getPath(), {});
  EXPECT_EQ(fcntl(next, F_GETFD), FD_CLOEXEC);
  kavTBX::basic_portstream<char>(owned, false);
  EXPECT_EQ(countOpen(cable.getPath()), 2) << "a stream takes what it does not own";
  kavTBX::basic_portstream<char>(owned, true);
  EXPECT_EQ(countOpen(cable.getPath()), 1);
  cPort port(cable.getPath(), {});
  EXPECT_EQ(port.overflow(END), END);
  EXPECT_EQ(countOpen(cable.getPath()), 1);
  expectDeadEnd(port);
}

/// A port that is open and usable.
class Port : public testing::Test {
 protected:
  cPtyPair cable;
  cPort port{cable.getPath(), {}};
};

// Catches: a character lost or doubled where two reads meet.
TEST_F(Port, ReadsTwelveAtATimeAndKeepsFourForPutBackAcrossShortReads) {
  EXPECT_EQ(port.readTimeout, 2500);
  char text[22];
  for (const char* const pair : {"ab", "cd"}) {
    cable.send(pair);
    EXPECT_EQ(port.sgetn(text, 2), 2);
  }
  cable.send("efghijklmnopqrstuv");
  ASSERT_TRUE(cable.waitUntilWaiting(18));
  EXPECT_EQ(port.sgetc(), 'e');
  EXPECT_EQ(cable.countWaiting(), 6);
  for (const char c : {'d', 'c', 'b', 'a'}) EXPECT_EQ(port.sungetc(), c);
  EXPECT_EQ(port.sungetc(), END);
  EXPECT_EQ(port.sgetn(text, 22), 22);
  EXPECT_EQ(std::string(text, 22), "abcdefghijklmnopqrstuv");
}

// 0xFF at the head of a read looks like end of file.
// Catches: that it is lost, or another value where char has no sign.
TEST_F(Port, ExtendsTheSignOfWhatUnderflowGives) {
  for (const auto& [byte, value] :
       {std::pair(0x7F, 127), std::pair(0x80, -128), std::pair(0xFF, -1), std::pair(0, 0)}) {
    cable.send(std::string(1, static_cast<char>(byte)));
    EXPECT_EQ(port.sgetc(), value);
    EXPECT_EQ(port.underflow(), value);
    EXPECT_EQ(port.sbumpc(), byte);
  }
}

// Catches: a read that never ends, spins, is over too early, or is deaf afterwards.
TEST_F(Port, EndsAReadByItsTimeOutAnInterruptOrAHangUp) {
  port.readTimeout = 60;
  EXPECT_GE(measure([&] { EXPECT_EQ(port.sgetc(), END); }), 60);
  EXPECT_FALSE(port.isExhausted());
  port.readTimeout = 0;
  EXPECT_EQ(port.sgetc(), END);
  EXPECT_TRUE(port.isExhausted()) << "reading again at once would spin";
  port.readTimeout = 60000;
  port.interruptReads(true);
  EXPECT_EQ(port.sgetc(), END);
  port.interruptReads(false);
  cable.send("old, and more than a read takes");
  ASSERT_TRUE(cable.waitUntilWaiting(31));
  EXPECT_EQ(port.sbumpc(), 'o');
  port.discardInput();
  cable.send("n");
  EXPECT_EQ(port.sbumpc(), 'n');
  EXPECT_FALSE(port.isExhausted());
  cable.hangUp();
  EXPECT_EQ(port.sgetc(), END);
  EXPECT_TRUE(port.isExhausted());
}

int farEnd = -1;
int ringsLeft = 0;

/// Raises a signal each period, in milliseconds; the one after `rings` of them sends a character.
void ringEvery(int period, int rings) {
  ringsLeft = rings;
  struct sigaction action = {};
  action.sa_handler = [](int) {
    if (ringsLeft-- == 0 && write(farEnd, "x", 1) != 1) abort();
  };
  sigaction(SIGALRM, &action, nullptr);
  const itimerval timer = {{0, 1000 * period}, {0, 1000 * period}};
  setitimer(ITIMER_REAL, &timer, nullptr);
}

// Would catch a read that a host's timer makes endless or ends too early, and a thread that is deaf
// to signals for longer than its time-out, or for ever.
TEST_F(Port, waitsForItsTimeOutAmongSignals) {
  sigset_t blocked;
  farEnd = cable.getMaster();
  for (const auto& [timeout, period, most] :
       {std::tuple(100, 1, 2500), std::tuple(2000, 130, 3900), std::tuple(-1, 1, LONG)}) {
    port.readTimeout = timeout;
    ringEvery(period, timeout < 0 ? 40 : INT_MAX);
    const auto expected = timeout < 0 ? 'x' : END;
    const long elapsed = measure([&] { EXPECT_EQ(port.sgetc(), expected); });
    ringEvery(0, 0);
    EXPECT_GE(elapsed, timeout);
    EXPECT_LT(elapsed, most);
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    ASSERT_FALSE(sigismember(&blocked, SIGTERM));
  }
}

// Catches: bytes changed or held back on their way; a writer, and with it the thread that joins
// it, held for ever by a far end that stopped reading.
TEST_F(Port, WritesStraightThroughUnlessNobodyTakesItForOneTimeOut) {
  EXPECT_EQ(port.sputn("a\nb\0c\r", 6), 6);
  EXPECT_EQ(port.sputc('\xE4'), 0xE4);
  EXPECT_EQ(port.overflow(0x141), 0x141);
  EXPECT_EQ(cable.receive(8), std::string("a\nb\0c\r\xE4\x41", 8));
  port.readTimeout = 20;
  std::streamsize written = 16;
  errno = 0;
  const cOutput output = outputOf([&] {
    EXPECT_EQ(port.sputn("", 0), 0);
    for (int i = 0; i < 100000 && written == 16; ++i) written = port.sputn("0123456789abcdef", 16);
  });
  EXPECT_EQ(written, -1);
  EXPECT_EQ(
      output.err,
      "basic_portbuf::write: Success\nbasic_portbuf::write: Resource temporarily unavailable\n");
}

}  // namespace
