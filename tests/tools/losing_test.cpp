#include "tests/support/settings.h"
#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

// Would catch a run that ends with the cable, counts its scans anew or writes its heading again,
// and a wait that no signal ends, or that loses the file then.
TEST(ProgramReconnect, goesOnWhenTheDeviceIsBackUnderItsName) {
  const cTempFolder folder;
  const std::string file = folder / "scans.csv";
  cSimSetting setting = turning();
  setting.link = folder / "sensor";
  cSimSensor sensor(setting);
  cProgram program({"scan", setting.link, "-n", "0", "--reconnect", "--format", "csv", "-o", file});
  ASSERT_TRUE(sensor.waitForSentScans(5, cProgram::DEADLINE));
  sensor.unplug();
  program.waitForError("waiting for " + setting.link);
  const auto scans = sensor.getCounters().scans;
  sensor.plug();
  ASSERT_TRUE(sensor.waitForSentScans(scans + 5, cProgram::DEADLINE));
  program.waitForError(setting.link + " is back after ");
  sensor.unplug();
  program.waitForError("No such file");
  program.signal(SIGTERM);
  EXPECT_EQ(program.wait(), 0) << program.getErrors();
  EXPECT_TRUE(holds(program.getErrors(), " 1 reconnect\n"));
  const auto lines = linesOf(readFile(file));
  EXPECT_EQ(lines.at(0), "scan,timestamp,index,angle_rad,distance_mm");
  EXPECT_EQ(lines.at(1).rfind("1,", 0), 0u);
  for (std::size_t i = 2; i < lines.size(); ++i)
    ASSERT_GE(std::stoul(lines[i]), std::stoul(lines[i - 1])) << "numbers begin anew";
  EXPECT_GT(lines.size(), 6 * 682u);
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

// Would catch the first device taken although it is another sensor.
TEST(ProgramSerial, picksItsSensorAmongTheDevices) {
  cSimSetting setting = turning();
  const cSimSensor other(setting);
  setting.seed = 3;
  const cSimSensor right(setting);
  const std::string devices = "TARVOLINK_DEVICES=" + other.getPath() + ":" + right.getPath();
  const cResult found =
      runProgram({"scan", "--serial", "S0000003", "--json"}, {PROGRAM_PATH, {devices}});
  EXPECT_TRUE(holds(found.output, "\"serial\":\"S0000003\"")) << found.errors;
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
