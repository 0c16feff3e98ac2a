// What callers of a driver see of the conversation: each its own answers, also late and refused
// ones.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tarvolink/scip2/cSensorDriverSCIP2.h"
#include "tests/scip/cRig.h"
#include "tests/support/cCaseName.h"

namespace {

const std::string SCAN = "MS0000076801000;1";

/// A scan of one reading, as it comes from a sensor that was sent `start`.
std::string makeScan(const std::string& start) {
  const std::string reading = start[1] == 'D' ? "000" : "00";
  return cScriptedPeer::respond(start, "99",
                                std::string("0000") + cScriptedPeer::sum("0000") + "\n" + reading +
                                    cScriptedPeer::sum(reading) + "\n");
}

/// Whether `command` comes back with its own answer.
bool isAnswered(cSensorDriverSCIP2& driver, const std::string& command) {
  const boost::shared_ptr<cSCIPRecord> record = driver.doRaw2(command, 1);
  return record->error == 0 && record->echo.substr(0, record->echo.find(';')) == command;
}

// Would catch answers that are mixed up between threads, and a scan's records among them.
TEST(Callers, eachGetTheirOwnAnswersBesideAScan) {
  constexpr int THREADS = 5;
  constexpr int COMMANDS = 200;
  cRig rig(
      [](const std::string& line) { return (line == SCAN ? "" : makeScan(SCAN)) + answer(line); });
  cSensorDriverSCIP2 driver(rig.link);
  driver.start();
  ASSERT_EQ(driver.startScan(0, 768, 1, 0, 0, 4095), 0);
  std::atomic<int> wrong{0};
  std::vector<std::thread> callers;
  for (int thread = 0; thread < THREADS; ++thread) {
    callers.emplace_back([&driver, &wrong, thread] {
      for (int i = 0; i < COMMANDS; ++i) {
        if (!isAnswered(driver, "V" + std::to_string(thread) + "x" + std::to_string(i))) ++wrong;
      }
    });
  }
  for (auto& caller : callers) caller.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(driver.getScanNum(), THREADS * COMMANDS);
}

// Would catch every later caller getting the answer to the command before its own.
TEST(Callers, aLateAnswerSpoilsOneExchangeOnly) {
  cRig rig([](const std::string& line) {
    if (line == "LATE;1") return std::string();
    return (line == "C0;2" ? answer("LATE;1") : "") + answer(line);
  });
  cSensorDriverSCIP2 driver(rig.link);
  driver.start();
  EXPECT_EQ(driver.doRaw2("LATE", 1)->error, 0x1);
  int spoiled = 0;
  for (int i = 0; i < 12; ++i) spoiled += isAnswered(driver, "C" + std::to_string(i)) ? 0 : 1;
  EXPECT_EQ(spoiled, 1);
}

struct cStart {
  const char* name;
  const char* status;  // of the acknowledgement; empty: there is none
  int scans;
  const char* complaint;
};

class FailedStart : public testing::TestWithParam<cStart> {};

// Would catch scans of a start that failed in the next caller's answers, or growing for ever.
TEST_P(FailedStart, keepsNoneOfItsRecords) {
  const cStart& start = GetParam();
  std::string first;
  cRig rig([&start, first](const std::string& line) mutable {
    if (line.substr(0, 2) == "MD") {
      first = line;
      return start.status[0] == 0 ? "" : cScriptedPeer::respond(line, start.status);
    }
    return makeScan(first) + makeScan(first) + answer(line);
  });
  cSensorDriverSCIP2 driver(rig.link);
  driver.start();
  testing::internal::CaptureStderr();
  EXPECT_EQ(driver.startScan(0, 768, 1, 0, start.scans, 4096), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), start.complaint);
  EXPECT_FALSE(driver.isScanning());
  for (int i = 0; i < 6; ++i) EXPECT_TRUE(isAnswered(driver, "VV"));
}

constexpr const char* REFUSED = " startScan:: scip2Status:1\n startScan:: error??\n";
constexpr const char* EXTENDED = " startScan:: scip2ExtStatus:0E\n startScan:: error??\n";

INSTANTIATE_TEST_SUITE_P(
    Callers, FailedStart,
    testing::Values(cStart{"refused", "01", 0, REFUSED}, cStart{"refusedCounted", "01", 1, REFUSED},
                    cStart{"unknown", "0E", 2, EXTENDED},
                    cStart{"unanswered", "", 0, " startScan:: comm error??\n"},
                    cStart{"unansweredCounted", "", 1, " startScan:: comm error??\n"}),
    cCaseName());

}  // namespace
