// Opening, reading, writing and closing a port.
#include "tarvolink/port/basic_portbuf.h"

#include <gtest/gtest.h>

#include <atomic>
#include <boost/make_shared.hpp>
#include <fstream>
#include <thread>

#include "tarvolink/port/basic_portstream.h"
#include "tests/base/measure.h"
#include "tests/support/cPtyPair.h"
#include "tests/support/syscalls.h"

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

void expectDeadEnd(cPort& port) {
  EXPECT_LT(measure([&] { EXPECT_EQ(port.sgetc(), END); }), port.readTimeout);
  EXPECT_TRUE(port.isDeadEnd());
  EXPECT_EQ(port.sputn("x", 1), 0);
}

TEST(PortOpening, aMissingDeviceIsToldAndCostsNoTime) {
  testing::internal::CaptureStderr();
  cPort port("/nowhere/tty", {});
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "basic_portbuf::c'tor: No such file or directory\n");
  EXPECT_EQ(port.getDevice(), "/nowhere/tty");
  EXPECT_FALSE(port.isTerminal());
  EXPECT_FALSE(port.termSetup(boost::make_shared<cPortSetting>()));
  expectDeadEnd(port);
  EXPECT_EQ(port.overflow('x'), 'x');
  EXPECT_EQ(port.overflow(END), 0);
}

TEST(PortOpening, whatIsNoTerminalStaysOpenButUnusable) {
  const std::string file = testing::TempDir() + "tarvo_no_tty_" + std::to_string(getpid());
  std::ofstream(file) << "content";
  testing::internal::CaptureStderr();
  {
    cPort port(file, {});
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "basic_portbuf::c'tor::tcgetattr: Inappropriate ioctl for device\n");
    EXPECT_FALSE(port.isTerminal());
    EXPECT_FALSE(port.termSetup(boost::make_shared<cPortSetting>()));
    EXPECT_EQ(port.sbumpc(), 'c');
    EXPECT_EQ(port.sputn("!", 1), 1);
  }
  std::string text;
  std::getline(std::ifstream(file), text);
  EXPECT_EQ(text, "content!");
  unlink(file.c_str());
}

TEST(PortOpening, aRefusedSettingLeavesItUnusableForGood) {
  cPtyPair cable;
  const auto refused = boost::make_shared<cPortSetting>();
  refused->stopBits = 3;
  cPort port(cable.getPath(), refused);
  EXPECT_FALSE(port.termSetup(boost::make_shared<cPortSetting>()));
  EXPECT_EQ(port.getSetting(), refused);
  EXPECT_TRUE(port.isTerminal());
  EXPECT_EQ(port.sputn("out", 3), 3);
  EXPECT_EQ(cable.receive(3), "out");
}

/// A port that is open and usable.
class Port : public testing::Test {
 protected:
  /// The flags of this process's descriptors on the device, the test's own slave left out.
  std::vector<int> listDescriptors() const {
    std::vector<int> flags;
    for (int fd = 0; fd < 256; ++fd) {
      const std::string entry = "/proc/self/fd/" + std::to_string(fd);
      char target[256] = {};
      const ssize_t length = readlink(entry.c_str(), target, sizeof target - 1);
      if (fd == cable.getSlave() || length < 0) continue;
      if (cable.getPath() == target) flags.push_back(fcntl(fd, F_GETFD));
    }
    return flags;
  }

  cPtyPair cable;
  std::unique_ptr<cPort> owned =
      std::make_unique<cPort>(cable.getPath(), boost::shared_ptr<cPortSetting>());
  cPort& port = *owned;
};

// Would catch a descriptor leaked to the host's children or to the rest of the process's life.
TEST_F(Port, isClosedOnExecAndWhenItGoes) {
  EXPECT_EQ(port.readTimeout, 2500);
  EXPECT_EQ(listDescriptors(), std::vector<int>{FD_CLOEXEC});
  kavTBX::basic_portstream<char>(&port, false);
  EXPECT_EQ(listDescriptors().size(), 1u) << "a stream takes what it does not own";
  kavTBX::basic_portstream<char>(owned.release(), true);
  EXPECT_TRUE(listDescriptors().empty());
  EXPECT_EQ(cable.getAttributes().c_lflag & ICANON, 0u) << "the device stays in raw mode";
}

TEST_F(Port, isClosedByWritingEndOfFile) {
  EXPECT_EQ(port.overflow(END), END);
  EXPECT_TRUE(listDescriptors().empty());
  expectDeadEnd(port);
  const auto odd = boost::make_shared<cPortSetting>();
  odd->baudRate = 4800;
  testing::internal::CaptureStderr();
  EXPECT_FALSE(port.termSetup(odd));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "a closed port is not usable";
}

TEST_F(Port, readsTwelveAtATimeAndKeepsFourForPutBack) {
  cable.send("abcdefghijklmnopqrst");
  ASSERT_TRUE(cable.waitUntilWaiting(20));
  EXPECT_EQ(port.sgetc(), 'a');
  EXPECT_EQ(cable.countWaiting(), 8);
  char text[12];
  EXPECT_EQ(port.sgetn(text, 12), 12);
  EXPECT_EQ(port.sgetc(), 'm');
  for (const char c : {'l', 'k', 'j', 'i'}) EXPECT_EQ(port.sungetc(), c);
  EXPECT_EQ(port.sungetc(), END);
  EXPECT_EQ(port.sgetn(text, 12), 12);
  EXPECT_EQ(std::string(text, 12), "ijklmnopqrst");
}

TEST_F(Port, keepsWhatThereIsForPutBackAcrossShortReads) {
  for (const char* const pair : {"ab", "cd", "ef"}) {
    cable.send(pair);
    ASSERT_TRUE(cable.waitUntilWaiting(2));
    EXPECT_EQ(port.sbumpc(), pair[0]);
    EXPECT_EQ(port.sbumpc(), pair[1]);
  }
  for (const char c : {'f', 'e', 'd', 'c', 'b', 'a'}) EXPECT_EQ(port.sungetc(), c);
}

// 0xFF at the head of a read looks like end of file; it is not lost. Holds for unsigned char too.
TEST_F(Port, extendsTheSignOfWhatUnderflowGives) {
  for (const auto& [byte, value] : {std::pair(0x7F, 127), std::pair(0x80, -128),
                                    std::pair(0xFE, -2), std::pair(0xFF, -1), std::pair(0, 0)}) {
    cable.send(std::string(1, static_cast<char>(byte)));
    EXPECT_EQ(port.sgetc(), value);
    EXPECT_EQ(port.underflow(), value);
    EXPECT_EQ(port.sbumpc(), byte);
  }
}

TEST_F(Port, waitsForItsTimeOut) {
  port.readTimeout = 60;
  EXPECT_GE(measure([&] { EXPECT_EQ(port.sgetc(), END); }), 60);
  EXPECT_FALSE(port.isDeadEnd());
  cable.send("x");
  EXPECT_TRUE(port.isAvailable());
  EXPECT_EQ(port.sbumpc(), 'x');
  port.readTimeout = 0;
  EXPECT_EQ(port.sgetc(), END);
  EXPECT_TRUE(port.isDeadEnd()) << "reading again at once would spin";
}

TEST_F(Port, endsAReadAtOnceWhenInterruptedOrHungUp) {
  port.readTimeout = 60000;
  port.interruptReads(true);
  EXPECT_EQ(port.sgetc(), END);
  port.interruptReads(false);
  cable.send("old");
  ASSERT_TRUE(cable.waitUntilWaiting(3));
  EXPECT_EQ(port.sbumpc(), 'o');
  port.discardInput();
  cable.send("n");
  EXPECT_EQ(port.sbumpc(), 'n');
  EXPECT_FALSE(port.isDeadEnd());
  cable.hangUp();
  EXPECT_EQ(port.sgetc(), END);
  EXPECT_TRUE(port.isDeadEnd());
  testing::internal::CaptureStderr();
  EXPECT_EQ(port.sputn("x", 1), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "basic_portbuf::write: Input/output error\n");
}

TEST_F(Port, writesStraightThroughAsBytes) {
  EXPECT_EQ(port.sputn("a\nb\0c\r", 6), 6);
  EXPECT_EQ(port.sputc('\xE4'), 0xE4);
  EXPECT_EQ(port.overflow(0x141), 0x141);
  EXPECT_EQ(cable.receive(8), std::string("a\nb\0c\r\xE4\x41", 8));
}

// Would catch a writer, and with it the thread that joins it, held for ever by a far end that
// stopped reading.
TEST_F(Port, givesAWriteThatNobodyTakesOneTimeOut) {
  port.readTimeout = 20;
  const std::string command(16, 'x');
  testing::internal::CaptureStderr();
  std::streamsize written = 16;
  for (int i = 0; i < 100000 && written == 16; ++i) written = port.sputn(command.data(), 16);
  EXPECT_EQ(written, -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "basic_portbuf::write: Resource temporarily unavailable\n");
}

// Would catch a read that a host's signal handler ends early.
TEST_F(Port, readsOnAfterASignal) {
  static std::atomic<int> handled{0};
  struct sigaction counting = {};  // no SA_RESTART
  counting.sa_handler = [](int) { ++handled; };
  sigaction(SIGUSR1, &counting, nullptr);
  port.readTimeout = 60000;
  const int before = syscalls::polls;
  int got = 0;
  std::thread reader([&] { got = port.sgetc(); });
  for (int interrupted = 1; interrupted <= 3; ++interrupted) {
    while (syscalls::polls <= before + interrupted) {
      pthread_kill(reader.native_handle(), SIGUSR1);
      usleep(1000);
    }
  }
  cable.send("x");
  reader.join();
  EXPECT_EQ(got, 'x');
  EXPECT_GE(handled, 3);
}

}  // namespace
