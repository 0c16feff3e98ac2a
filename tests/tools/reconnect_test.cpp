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
    const auto lines = linesOf(readFile(file));
    EXPECT_EQ(lines.at(0), "scan,timestamp,index,angle_rad,distance_mm");
    for (std::size_t i = 1; i < lines.size(); ++i) ASSERT_EQ(std::stoul(lines[i]), (i + 681) / 682);
    EXPECT_GT(lines.size(), (isBack ? 6 : 2) * 682u);
  }
}
