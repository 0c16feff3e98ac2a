#include <gtest/gtest.h>

#include "sim/tarvosim.h"
#include "tests/sim/cRawHost.h"

namespace {

cSimSetting scip1(eSimDialect dialect = eSimDialect::SCIP1) {
  cSimSetting setting;
  setting.dialect = dialect;
  setting.rate = 200;
  setting.speed = 19200;
  return setting;
}

std::string version(const std::string& protocol) {
  return "V\n0\nVEND:Simulated sensors;\nPROD:Simulated short range scanner;\nFIRM:1.0.0;\nPROT:" +
         protocol + ";\nSERI:S0000001;\n\n";
}

}  // namespace

// Catches: an answer of SCIP 1.x that has sums, a tag, a wrong digit or a wrong end.
TEST(SimScip1, Answers) {
  cSimSensor sensor(scip1());
  cRawHost host(sensor.getPath(), 19200);
  EXPECT_EQ(host.ask("V"), version("00003,(SCIP 1.0)"));
  for (const char* refused : {"L2", "SCIP2.0", "VV;1", "G04404301", "G00076901", "G0000010",
                              "G000001001", "S0120001234567", "S019200123456"})
    EXPECT_EQ(host.ask(refused), std::string(refused) + "\n1\n\n");
  for (const char* taken : {"L0", "L1", "S0192001234567"})
    EXPECT_EQ(host.ask(taken), std::string(taken) + "\n0\n\n");
}

// Catches: G data that are not the world's, in either form, with every kind of last group.
TEST(SimScip1, ScansAreTheTruth) {
  struct cRow {
    const char* command;
    int first, last, cluster;
  };
  for (bool wide : {false, true}) {
    cSimSetting setting = scip1();
    setting.speed = 0;
    setting.threeCharScip1 = wide;
    cSimSensor sensor(setting);
    cRawHost host(sensor.getPath());
    std::size_t scans = 0;
    for (const cRow& row : {cRow{"G00076801", 0, 768, 1}, cRow{"G04472500", 44, 725, 0},
                            cRow{"G04472599", 44, 725, 99}, cRow{"G38438403", 384, 384, 3}}) {
      const auto lines = raw::lines(host.ask(row.command));
      ASSERT_TRUE(sensor.waitForSentScans(++scans, std::chrono::seconds(10)));
      ASSERT_GE(lines.size(), 3u);
      EXPECT_EQ(lines[0] + lines[1], std::string(row.command) + "0");
      std::string data;
      for (std::size_t i = 2; i + 1 < lines.size(); ++i) {
        EXPECT_TRUE(lines[i].size() == 64 || i + 2 == lines.size());
        data += lines[i];
      }
      EXPECT_EQ(raw::decode(data, wide ? 3 : 2),
                sensor.getTrueDistances(sensor.getSentScans().back(), row.first, row.last,
                                        row.cluster, wide ? INT_MAX : 4095));
    }
    EXPECT_EQ(host.ask("V").find("PROT:00003,(SCIP1.0z[Data Encoded by 3char for over 4095m]);") ==
                  std::string::npos,
              !wide);
  }
}

// Catches: a sensor that stays in SCIP 1.x after the switch, or forgets to go back at power-on.
TEST(SimScip1, SwitchesOver) {
  cSimSensor sensor(scip1(eSimDialect::SCIP1_SWITCH));
  {
    cRawHost host(sensor.getPath(), 19200);
    EXPECT_EQ(host.ask("QT"), "QT\n1\n\n");
    EXPECT_EQ(host.ask("SCIP2.0"), "SCIP2.0\n0\n\n");
    EXPECT_EQ(host.ask("QT"), "QT\n00P\n\n");
    EXPECT_EQ(host.ask("V"), "V\n0Ee\n\n");
  }
  sensor.unplug();
  sensor.plug();
  cRawHost host(sensor.getPath(), 19200);
  EXPECT_EQ(host.ask("QT"), "QT\n1\n\n");
}
