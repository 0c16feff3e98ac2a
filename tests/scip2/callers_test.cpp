// What callers of a driver see of late and refused answers.
#include "tests/support/cScriptedSensor.h"

namespace {

/// Whether `command` comes back with its own answer.
bool isAnswered(cSensorDriverSCIP2& driver, const std::string& command) {
  const boost::shared_ptr<cSCIPRecord> record = driver.doRaw2(command, 1);
  return record->error == 0 && record->echo.substr(0, record->echo.find(';')) == command;
}

// Catches: every later caller getting the answer to the command before its own.
TEST(Callers, LoseOneExchangeToALateAnswer) {
  const cScriptedSensor sensor([](const std::string& line) {
    if (line == "LATE;1") return std::string();
    return (line == "C;2" ? answer("LATE;1") : "") + answer(line);
  });
  const tDriver2 driver = openDriver(sensor.getPath(), 50);
  EXPECT_EQ(driver->doRaw2("LATE", 1)->error, 0x1);
  EXPECT_TRUE(isAnswered(*driver, "C"));
  EXPECT_EQ(driver->fetchVersionStr(), -1) << "what it took was no version";
  for (int i = 0; i < 12; ++i) EXPECT_TRUE(isAnswered(*driver, "C" + std::to_string(i)));
}

// Catches: scans of a start that failed in the next caller's answers, or growing for ever.
TEST(Callers, SeeNoRecordsOfAStartThatFailed) {
  using tRow = std::tuple<const char*, int, std::string>;
  for (const auto& [status, scans, complaint] :  // "": there is no acknowledgement
       {tRow{"01", 1, " startScan:: scip2Status:1\n startScan:: error??\n"},
        tRow{"2049", 1, " startScan:: scip2Status:2049\n startScan:: error??\n"},
        tRow{"-5", 1, " startScan:: scip2Status:-5\n startScan:: error??\n"},
        tRow{"0E", 2, " startScan:: scip2ExtStatus:0E\n startScan:: error??\n"},
        tRow{"", 0, " startScan:: comm error??\n"}}) {
    const auto rule = [first = std::string(),
                       acknowledgement = std::string(status)](const std::string& line) mutable {
      if (line[0] != 'M') return scanOf(first, "000") + scanOf(first, "000") + answer(line);
      first = line;
      return acknowledgement.empty() ? "" : answer(line, acknowledgement);
    };
    const cScriptedSensor sensor(rule);
    const tDriver2 driver = openDriver(sensor.getPath(), 50);
    std::string printed;
    const auto start = [&, count = scans, expected = complaint] {
      const auto fail = [&] { EXPECT_EQ(driver->startScan(0, 768, 1, 0, count, 4096), -1); };
      printed = outputOf(fail).err;
      return printed == expected ? 0 : -1;
    };
    EXPECT_EQ(retryIfStarved(*driver, start), 0) << printed;
    EXPECT_FALSE(driver->isScanning());
    for (int i = 0; i < 6; ++i) EXPECT_TRUE(isAnswered(*driver, "VV")) << status << " " << scans;
  }
}

}  // namespace
