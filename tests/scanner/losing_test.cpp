// What happens when sensor, line or device fail, and that it comes back.
#include <future>

#include "tests/scanner/scannerRig.h"
#include "tests/support/cCaseName.h"

using namespace tarvo;

namespace {

const std::string LINK = testing::TempDir() + "scanner-" + std::to_string(getpid());

cSimSetting linked(eSimDialect dialect) {
  cSimSetting setting = fast(dialect);
  setting.link = LINK;
  return setting;
}

struct cLossCase {
  const char* name;
  eSimFault fault;
  eProblem problem;
};

class Losing : public testing::TestWithParam<cLossCase> {};

/// Times `stop`, in milliseconds, and that the laser is off afterwards.
long timeStop(cScanner& scanner) {
  return measure([&] { scanner.stop(); });
}

}  // namespace

// Catches: a loss that is not noticed or has another reason, a sensor that does not come back by
// itself, or not within a second; a scanner that cannot be stopped while its sensor is lost.
TEST_P(Losing, IsReportedAndEndsByItself) {
  const cLossCase& loss = GetParam();
  for (const eSimDialect dialect : {eSimDialect::SCIP2, eSimDialect::SCIP1}) {
    cSimSensor sensor(linked(dialect));
    cScanner scanner(LINK);
    take(scanner);
    sensor.setFault(loss.fault);
    EXPECT_TRUE(comesTo(scanner, eState::WAITING, loss.problem));
    while (scanner.next(0ms)) {
    }
    const auto back = measure([&] {
      sensor.clearFault(loss.fault);
      take(scanner);
    });
    EXPECT_LT(back, 5000) << "a second, on a machine that does nothing else";
    EXPECT_EQ(scanner.getHealth().reconnects, 1U);
    EXPECT_TRUE(comesTo(scanner, eState::SCANNING));
    sensor.setFault(loss.fault);
    EXPECT_TRUE(comesTo(scanner, eState::WAITING, loss.problem));
    EXPECT_LT(timeStop(scanner), 1000);
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, Losing,
    testing::Values(cLossCase{"Unplugged", eSimFault::UNPLUGGED, eProblem::DEVICE_MISSING},
                    cLossCase{"Silent", eSimFault::STALL, eProblem::SENSOR_SILENT},
                    cLossCase{"Damaged", eSimFault::WRONG_COUNT, eProblem::SCANS_DAMAGED},
                    cLossCase{"Refusing", eSimFault::STATUS, eProblem::SENSOR_REFUSES}),
    cCaseName());

// Catches: a sensor that is not found when it comes back at another speed and dialect; another
// sensor that is taken without a word.
TEST(Scanner, FindsWhateverSensorComesBack) {
  cSimSetting first = linked(eSimDialect::SCIP2);
  auto sensor = std::make_unique<cSimSensor>(first);
  cScanner scanner(LINK);
  EXPECT_EQ(take(scanner)->sensor->serial, "S0000001");
  sensor.reset();
  EXPECT_TRUE(comesTo(scanner, eState::WAITING, eProblem::DEVICE_MISSING));
  cSimSetting second = linked(eSimDialect::SCIP1);
  second.seed = 2;
  second.speed = 57600;
  sensor = std::make_unique<cSimSensor>(second);
  EXPECT_TRUE(comesTo(scanner, eState::SCANNING, eProblem::OTHER_SENSOR));
  const cHealth health = scanner.getHealth();
  EXPECT_EQ(health.sensor->lineSpeed, 57600);
  EXPECT_EQ(health.sensor->dialect, eDialect::SCIP1);
  EXPECT_NE(health.problem.message.find("S0000002, the one before had the serial number S0000001"),
            std::string::npos)
      << health.problem.message;
}

// Catches: a wrong sensor that is scanned, one that stays unnamed, a port looked at that was not
// listed.
TEST(Scanner, WaitsForTheSerialNumber) {
  cSimSetting setting = fast();
  setting.seed = 7;
  const cSimSensor wrong(setting), unlisted(setting);
  cScannerOptions options(wrong.getPath());
  options.serial = "S0000009";
  options.otherDevices = {LINK};
  cScanner scanner(options);
  EXPECT_TRUE(comesTo(scanner, eState::WAITING, eProblem::WRONG_SENSOR));
  EXPECT_NE(scanner.getHealth().problem.message.find("S0000007, not S0000009"), std::string::npos);
  EXPECT_FALSE(wrong.isScanning());
  cSimSetting right = linked(eSimDialect::SCIP2);
  right.seed = 9;
  const cSimSensor sensor(right);
  EXPECT_EQ(take(scanner)->sensor->serial, "S0000009");
  EXPECT_EQ(unlisted.getCounters().bytesReceived, 0U);
}

// Catches: a lost sensor that is looked for although that was not wanted, a stopped scanner that
// cannot be started again, or that keeps what it knew of the sensor before.
TEST(Scanner, StopsWhenLostAndStartsAgain) {
  cSimSensor sensor(linked(eSimDialect::SCIP2));
  std::vector<eState> states;  // written by the scanner's thread, read when it has ended
  cScannerOptions options(LINK);
  options.comesBack = false;
  options.onHealth = [&](const cHealth& health) { states.push_back(health.state); };
  cScanner scanner(options);
  take(scanner);
  sensor.unplug();
  EXPECT_TRUE(comesTo(scanner, eState::STOPPED, eProblem::DEVICE_GONE));
  EXPECT_TRUE(scanner.isStopped());
  while (scanner.next(LONG_TIME)) {
  }
  sensor.plug();
  scanner.start();
  take(scanner);
  scanner.requestStop();
  EXPECT_TRUE(comesTo(scanner, eState::STOPPED));
  scanner.stop();
  using S = eState;
  EXPECT_EQ(states, (std::vector<S>{S::SEARCHING, S::SCANNING, S::STOPPED, S::SEARCHING,
                                    S::SCANNING, S::STOPPED}));
}

// Catches: a stop that takes longer than a second in some state, or leaves the laser on.
TEST(Scanner, StopsWithinASecondInEachState) {
  for (const eSimDialect dialect : {eSimDialect::SCIP2, eSimDialect::SCIP1}) {
    for (const int delay : {0, 1, 10, 50, 120, 200, 300, 400}) {
      cSimSetting setting = fast(dialect);
      setting.speed = 57600;
      cSimSensor sensor(setting);
      cScanner scanner(sensor.getPath());
      scanner.next(std::chrono::milliseconds(delay * 5));
      EXPECT_LT(timeStop(scanner), 1000) << "after " << delay * 5 << " ms";
      EXPECT_TRUE(eventually([&] { return !sensor.isScanning(); }));
    }
    cSimSetting setting = fast(dialect);
    cSimSensor sensor(setting);
    cScanner scanner(sensor.getPath());
    take(scanner);
    sensor.setFault(eSimFault::ENDLESS_BODY, 1 << 24);
    ASSERT_TRUE(eventually([&] { return scanner.getHealth().damaged > 0; }));
    EXPECT_LT(timeStop(scanner), 1000) << "a line that never falls silent";
  }
}

// Catches: scans lost on the line that are not counted, or counted twice; a line that is too slow
// without a word of it.
TEST(Scanner, CountsWhatIsMissing) {
  cSimSetting setting = fast();
  setting.rate = 0;
  setting.speed = 57600;  // carries 2.7 of 10 scans a second
  cSimSensor sensor(setting);
  cScanner scanner(sensor.getPath());
  EXPECT_TRUE(comesTo(scanner, eState::SCANNING, eProblem::LINE_TOO_SLOW));
  EXPECT_EQ(scanner.getHealth().problem.message, "57600 bits/s carry 2.7 of 10 scans a second.");
  std::uint64_t number = take(scanner)->number, gaps = 0;
  for (int i = 0; i < 3; ++i) {
    const std::uint64_t next = take(scanner)->number;
    gaps += next - number - 1;
    number = next;
  }
  EXPECT_GE(gaps, 6U);
  EXPECT_GE(scanner.getHealth().lost, gaps);
}
