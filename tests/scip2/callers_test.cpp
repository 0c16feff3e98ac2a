// What callers of a driver see of the conversation: each its own answers, also late and refused
// ones.
#include <gtest/gtest.h>

#include <atomic>
#include <boost/thread/thread.hpp>

#include "tarvolink/scip2/cSensorDriverSCIP2.h"
#include "tests/scip/cRig.h"

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
  boost::thread_group callers;
  for (int i = 0; i < THREADS; ++i) {
    callers.create_thread([&driver, &wrong, name = "V" + std::to_string(i) + "x"] {
      for (int j = 0; j < COMMANDS; ++j) {
        if (!isAnswered(driver, name + std::to_string(j))) ++wrong;
      }
    });
  }
  callers.join_all();
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

// Would catch scans of a start that failed in the next caller's answers, or growing for ever.
TEST(Callers, aFailedStartKeepsNoneOfItsRecords) {
  struct cRow {
    const char* status;  // of the acknowledgement; empty: there is none
    int scans;
    std::string complaint;
  };
  for (const auto& [status, scans, complaint] :
       {cRow{"01", 1, " startScan:: scip2Status:1\n startScan:: error??\n"},
        cRow{"0E", 2, " startScan:: scip2ExtStatus:0E\n startScan:: error??\n"},
        cRow{"", 0, " startScan:: comm error??\n"}}) {
    cRig rig(
        [first = std::string(), answered = std::string(status)](const std::string& line) mutable {
          if (line.substr(0, 2) != "MD") return makeScan(first) + makeScan(first) + answer(line);
          first = line;
          return answered.empty() ? "" : cScriptedPeer::respond(line, answered);
        });
    cSensorDriverSCIP2 driver(rig.link);
    driver.start();
    testing::internal::CaptureStderr();
    EXPECT_EQ(driver.startScan(0, 768, 1, 0, scans, 4096), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), complaint);
    EXPECT_FALSE(driver.isScanning());
    for (int i = 0; i < 6; ++i) EXPECT_TRUE(isAnswered(driver, "VV")) << status << " " << scans;
  }
}

}  // namespace
