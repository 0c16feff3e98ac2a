// Commands of a host to a scanner's sensor.

#include "tests/scanner/scannerRig.h"

using namespace tarvo;

// Catches: an answer that is lost among the scans or costs one, a pause that leaves the laser on, a
// refusal or a silence without a reason, callers that take each other's answers.
TEST(Commands, AreAnsweredWhileItScans) {
  for (const eSimDialect dialect : {eSimDialect::SCIP2, eSimDialect::SCIP1}) {
    cSimSensor sensor(fast(dialect));
    cScanner scanner(sensor.getPath());
    take(scanner);
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i) {
      callers.emplace_back([&] {
        for (int round = 0; round < 5; ++round) {
          const cCommandResult result = scanner.fetchVersion();
          EXPECT_TRUE(result) << result.problem;
          if (result) {
            EXPECT_EQ(result.sensor->serial, "S0000001");
          }
          EXPECT_TRUE(scanner.fetchStatus());
        }
      });
    }
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(scanner.getHealth().lost + scanner.getHealth().damaged, 0U);
    EXPECT_TRUE(scanner.setLaser(false));
    EXPECT_EQ(scanner.getHealth().state, eState::PAUSED);
    EXPECT_TRUE(eventually([&] { return !sensor.isScanning(); }));
    EXPECT_TRUE(scanner.fetchVersion()) << "in a pause";
    EXPECT_TRUE(scanner.setLaser(true));
    while (scanner.next(0ms)) {
    }
    take(scanner);
    sensor.setFault(eSimFault::NO_ANSWER, cSimSensor::DEFAULT_VALUE,
                    dialect == eSimDialect::SCIP1 ? "V" : "VV");
    const cCommandResult unanswered = scanner.fetchVersion();
    EXPECT_EQ(unanswered.problem, "the command got no answer");
    EXPECT_EQ(scanner.getHealth().failedCommands, 1U);
  }
}

// Catches: a command that waits for a sensor that is not there, or in a callback for itself; a
// laser that comes on again with the sensor although it was switched off.
TEST(Commands, FailAtOnceWithoutASensor) {
  cSimSensor sensor(fast());
  cScanner scanner(sensor.getPath());
  take(scanner);
  std::atomic<bool> isRefused{false};
  auto callback = scanner.subscribe([&](const tScanPtr&) { isRefused = !scanner.fetchStatus(); });
  EXPECT_TRUE(eventually([&] { return isRefused.load(); }));
  callback.reset();
  sensor.setFault(eSimFault::STALL);
  EXPECT_TRUE(comesTo(scanner, eState::WAITING, eProblem::SENSOR_SILENT));
  EXPECT_EQ(
      scanner.setLaser(false).problem.rfind("no sensor is connected: the scanner is waiting.", 0),
      0U);
  sensor.clearFaults();
  EXPECT_TRUE(comesTo(scanner, eState::PAUSED));
  EXPECT_FALSE(sensor.isScanning());
}

// Catches: a speed that is raised at one end only, a sensor that is lost after it was, a refusal
// that ends the scanning or that nobody hears of.
TEST(Commands, RaiseTheLineSpeed) {
  for (const auto& [dialect, speed] :
       {std::pair(eSimDialect::SCIP2, 19200), std::pair(eSimDialect::SCIP1, 19200),
        std::pair(eSimDialect::SCIP1_SWITCH, 19200), std::pair(eSimDialect::SCIP2, 0)}) {
    cSimSetting setting = fast(dialect);
    setting.speed = speed;
    const cSimSensor sensor(setting);
    cScannerOptions options(sensor.getPath());
    options.raisedSpeed = 500000;
    cScanner scanner(options);
    const int raised = take(scanner)->sensor->lineSpeed;
    if (speed == 0) {  // USB has none
      EXPECT_TRUE(comesTo(scanner, eState::SCANNING, eProblem::SPEED_NOT_RAISED));
    } else {
      EXPECT_EQ(raised, 500000);
      EXPECT_EQ(sensor.getSpeed(), 500000);
    }
  }
}
