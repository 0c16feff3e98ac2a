#include <csignal>

#include "tests/support/settings.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

// Would catch a run that ends with the cable, counts its scans anew or writes its heading again,
// and a wait that no signal ends, or that loses the file then.
TEST(ProgramReconnect, goesOnWhenTheDeviceIsBackUnderItsName) {
  constexpr std::chrono::seconds PATIENCE{60};
  for (const bool isBack : {true, false}) {
    const cTempFolder folder;
    const std::string link = folder / "sensor", file = folder / "scans.csv";
    cSimSetting setting = turning();
    setting.link = link;
    cSimSensor sensor(setting);
    cProgram program({"scan", link, "-n", "0", "--reconnect", "--format", "csv", "-o", file});
    ASSERT_TRUE(sensor.waitForSentScans(5, PATIENCE));
    sensor.unplug();
    program.waitForError("waiting for " + link);
    const auto scans = sensor.getCounters().scans;
    if (isBack) sensor.plug();
    ASSERT_TRUE(!isBack || sensor.waitForSentScans(scans + 5, PATIENCE));
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0) << program.getErrors();
    EXPECT_TRUE(holds(program.getErrors(), isBack ? " 1 reconnect\n" : " 0 reconnects\n"));
    EXPECT_TRUE(!isBack || holds(program.getErrors(), link + " is back after "));
    const auto lines = linesOf(readFile(file));
    EXPECT_EQ(lines.at(0), "scan,timestamp,index,angle_rad,distance_mm");
    EXPECT_EQ(lines.at(1).rfind("1,", 0), 0u);
    for (std::size_t i = 2; i < lines.size(); ++i)
      ASSERT_GE(std::stoul(lines[i]), std::stoul(lines[i - 1])) << "numbers begin anew";
    EXPECT_GT(lines.size(), (isBack ? 6 : 2) * 682u);
  }
}

// Would catch a run that seems to be whole although scans are missing, a gap that the numbers do
// not show, and a script that is not told.
TEST(ProgramLost, isCountedWarnedOfAndForbiddenByStrict) {
  for (const bool isStrict : {false, true}) {
    cSimSensor spoiled(turning());
    cProgram program({"scan", spoiled.getPath(), "-n", "12", isStrict ? "--strict" : "--wait"});
    program.waitFor("\n     2");
    spoiled.setFault(eSimFault::WRONG_SUM, 2, "scan", 3);
    EXPECT_EQ(program.wait(), isStrict ? 4 : 0) << program.getErrors();
    EXPECT_TRUE(holds(program.getErrors(), "12 scans, 3 damaged, 0 lost, "));
    EXPECT_TRUE(holds(program.getErrors(), "scans are missing"));
    EXPECT_EQ(linesOf(program.getOutput()).back().rfind("    15", 0), 0u) << program.getOutput();
  }
}

// Would catch a wait that a device ends although it is another sensor, or a port that is opened and
// was not named.
TEST(ProgramSerial, waitsForItsSensorAmongTheDevicesAlone) {
  const cTempFolder folder;
  cSimSetting setting = turning();
  setting.seed = 2;
  const cSimSensor other(setting), unlisted(turning());
  const std::string listed = other.getPath();
  cProgram program({"scan", "--serial", "S0000003", "--wait"},
                   {PROGRAM_PATH, {"TARVOLINK_DEVICES=" + listed}});
  program.waitForError("looking for the sensor S0000003 on " + listed);
  program.waitForError("the serial number S0000002, not S0000003");
  program.signal(SIGINT);
  EXPECT_EQ(program.wait(), -SIGINT);
  setting.seed = 3;
  const cSimSensor right(setting);
  const cResult found =
      runProgram({"scan", "--serial", "S0000003", "--json"},
                 {PROGRAM_PATH, {"TARVOLINK_DEVICES=" + listed + ":" + right.getPath()}});
  EXPECT_TRUE(holds(found.output, "\"serial\":\"S0000003\"")) << found.errors;
  EXPECT_EQ(unlisted.getCounters().bytesReceived, 0u);
}

// Would catch a quiet run that talks, a verbose one that does not say what is on the line, and a
// device that is not waited for.
TEST(ProgramMessages, areAsManyAsAskedFor) {
  EXPECT_EQ(runProgram({"scan", "sim:", "-q"}).errors, "");
  const std::string all = runProgram({"scan", "sim:", "-v"}).errors;
  EXPECT_TRUE(holds(all, " bits/s, sent ") && holds(all, "MD0044072501000;") &&
              holds(all, "health: "));
  const cTempFolder folder;
  cProgram program({"scan", folder / "sensor", "--wait"});
  program.waitForError("(--wait)");
  cSimSetting setting = turning();
  setting.link = folder / "sensor";
  const cSimSensor sensor(setting);
  EXPECT_EQ(program.wait(), 0) << program.getErrors();
}
