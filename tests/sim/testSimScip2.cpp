#include <gtest/gtest.h>

#include <sstream>

#include "sim/tarvosim.h"
#include "tests/sim/cRawHost.h"

namespace {

/// What is said in turn: "command>status|command>status", the sums typed by hand.
struct cDialogue {
  const char* name;
  eSimModel model;
  int speed;
  const char* exchanges;
};

void PrintTo(const cDialogue& dialogue, std::ostream* out) { *out << dialogue.exchanges; }
std::string nameOf(const testing::TestParamInfo<cDialogue>& info) { return info.param.name; }

constexpr auto SHORT = eSimModel::SHORT_RANGE;
constexpr auto LONG = eSimModel::LONG_RANGE;

const cDialogue DIALOGUES[] = {
    {"Laser", SHORT, 0, "QT>00P|BM>00P|BM>02R|QT>00P|BM>00P"},
    {"Stored", SHORT, 0,
     "GD0044072501>10Q|GS0044072501;1>10Q|GDx044072501>01Q|GD0044x72501>02R|GD00440725x1>03S|"
     "GD0044072601>04T|GD0045004401>05U|GD004407250>0Cc|GD00440725010>0Dd"},
    {"Measuring", LONG, 0,
     "MDx000108001000>01Q|MD0000108.01000>02R|MS00001080 1000>03S|MD000010800/000>03S|"
     "MD0000108101000>04T|MD0002000101000>05U|MD000010800100>0Cc|MD>0Cc|MD00001080010000>0Dd|"
     "MD0000108001-00>06V|MD00001080010x0>07W|MD000010800100x>07W"},
    {"Adjust", SHORT, 0,
     "TM1>04T|TM2;3>03S|TM3>01Q|TM>0Cc|BM>00P|TM0>00P|TM0>02R|VV>0Aa|BM>0Aa|TM2>00P|"
     "GD0044072501>10Q"},
    {"Strings", SHORT, 0,
     "QT;0123456789abcdef>00P|QT;Z ._+@>00P|QT;>00P|QT;0123456789abcdefg>0Gg|QT;a-b>0Hh|"
     "QT;1;2>0Hh"},
    {"Unknown", SHORT, 0, "XX>0Ee|SCIP2.0>0Ee|V>0Ee|vv>0Ee|VV0>0Dd| >0Ee"},
    {"LineSpeed", SHORT, 19200, "SS01920x>01Q|SS012345>02R|SS019200>03S|SS>0Cc|SS0192000>0Dd"},
    {"LineSpeedOfUsb", LONG, 0, "SS019200>04T|SSx>0Cc"},
    {"Motor", SHORT, 0, "CR05>00P|CR05>03S|CR11>02R|CR99>00P|CRxx>01Q"},
    {"MotorOfLong", LONG, 0, "CR05>04T|HS1>04T"},
    {"Sensitivity", SHORT, 0, "HS1>00P|HS1>02R|HS0>00P|HS2>01Q"},
    {"Reset", SHORT, 0, "BM>00P|RS>00P|BM>00P|RT>00P|TM0>00P|TM2>00P"}};

class SimDialogue : public testing::TestWithParam<cDialogue> {};

}  // namespace

// Catches: a wrong status, sum, echo or line end of any command, and a state that a command does
// not change.
TEST_P(SimDialogue, Answers) {
  cSimSetting setting;
  setting.model = GetParam().model;
  setting.speed = GetParam().speed;
  cSimSensor sensor(setting);
  cRawHost host(sensor.getPath());
  std::istringstream exchanges(GetParam().exchanges);
  for (std::string command, status; std::getline(exchanges, command, '>');) {
    std::getline(exchanges, status, '|');
    EXPECT_EQ(host.ask(command), command + "\n" + status + "\n\n");
  }
}

INSTANTIATE_TEST_SUITE_P(Sim, SimDialogue, testing::ValuesIn(DIALOGUES), nameOf);

// Catches: parameters of another model, missing or unsummed information lines.
TEST(SimScip2, TellsItsParameters) {
  const std::pair<eSimModel, const char*> rows[] = {
      {eSimModel::SHORT_RANGE,
       "MODL:SIM-S240(Short range)|DMIN:20|DMAX:5600|ARES:1024|AMIN:44|AMAX:725|AFRT:384|SCAN:600"},
      {eSimModel::MIDDLE_RANGE,
       "MODL:SIM-M270(Middle range)|DMIN:20|DMAX:8000|ARES:1024|AMIN:0|AMAX:768|AFRT:384|SCAN:900"},
      {eSimModel::LONG_RANGE,
       "MODL:SIM-L270(Long range)|DMIN:23|DMAX:60000|ARES:1440|AMIN:0|AMAX:1080|AFRT:540|"
       "SCAN:2400"}};
  for (const auto& [model, values] : rows) {
    cSimSetting setting;
    setting.model = model;
    setting.seed = 12;
    cSimSensor sensor(setting);
    cRawHost host(sensor.getPath());
    std::string expected = "PP;7\n00P\n";
    std::istringstream stream(values);
    for (std::string value; std::getline(stream, value, '|');)
      expected += value + ";" + raw::sum(value) + "\n";
    EXPECT_EQ(host.ask("PP;7"), expected + "\n");
    EXPECT_NE(host.ask("VV").find("SERI:S0000012;"), std::string::npos);
  }
}

// Catches: the remark on the wrong side of its sum, and a status that does not follow the laser.
TEST(SimScip2, TellsItsStatus) {
  for (eSimRemark remark : {eSimRemark::NONE, eSimRemark::INSIDE_SUM, eSimRemark::OUTSIDE_SUM}) {
    cSimSetting setting;
    setting.speed = 57600;
    setting.remark = remark;
    cSimSensor sensor(setting);
    cRawHost host(sensor.getPath());
    host.ask("BM");
    const auto lines = raw::lines(host.ask("II"));
    ASSERT_EQ(lines.size(), 10u);
    EXPECT_EQ(lines[3].substr(0, 8), "LASR:ON;");
    EXPECT_EQ(lines[8],
              std::string("STAT:Sensor works well.;") + raw::sum("STAT:Sensor works well."));
    const std::string text = "<-Default setting by user";
    const std::string speed = "SBPS:57600[bps]";
    const std::string shown = remark == eSimRemark::NONE ? speed : speed + text;
    const std::string summed = remark == eSimRemark::INSIDE_SUM ? shown : speed;
    EXPECT_EQ(lines[6], shown + ";" + raw::sum(summed));
  }
}

// Catches: line ends that are not heard, or heard twice; commands lost when several come at once;
// a repetition that is answered like the first.
TEST(SimScip2, HearsLines) {
  std::vector<std::string> heard;
  cSimSetting setting;
  setting.onCommand = [&](const std::string& line) { heard.push_back(line); };
  {
    cSimSensor sensor(setting);
    cRawHost host(sensor.getPath());
    host.write("\n\r\nQT\r\n\rBM\rTM2;");
    EXPECT_EQ(host.readRecord(), "QT\n00P\n\n");
    EXPECT_EQ(host.readRecord(), "BM\n00P\n\n");
    EXPECT_EQ(host.ask("5"), "TM2;5\n03S\n\n");
    host.write("HS1\nHS1\n");
    EXPECT_EQ(host.readUntil("0Bb\n\n"), "HS1\n00P\n\nHS1\n0Bb\n\n");
    const std::string kept(128, 'x');
    EXPECT_EQ(host.ask(kept + "yz"), kept + "\n0Bb\n\n");
    EXPECT_EQ(sensor.getCommands().size(), 6u);
    EXPECT_TRUE(sensor.waitForCommand("HS", std::chrono::seconds(10), 2));
    EXPECT_FALSE(sensor.waitForCommand("HS", std::chrono::milliseconds(0), 3));
  }
  EXPECT_EQ(heard[2], "TM2;5");
}

// Catches: a time that is asked in adjust mode and is no time, or comes without its sum.
TEST(SimScip2, TellsTheTime) {
  cSimSensor sensor((cSimSetting()));
  cRawHost host(sensor.getPath());
  host.ask("TM0");
  const auto first = raw::lines(host.ask("TM1"));
  const auto second = raw::lines(host.ask("TM1;a"));
  for (const auto& lines : {first, second}) {
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[1], "00P");
    EXPECT_EQ(lines[2].size(), 5u);
    EXPECT_EQ(raw::sum(lines[2].substr(0, 4)), lines[2][4]);
  }
  const int before = raw::decode(first[2].substr(0, 4), 4)[0];
  EXPECT_LE(before, raw::decode(second[2].substr(0, 4), 4)[0]);
}

// Catches: a setting for unknown and blank commands that is not obeyed, in either dialect.
TEST(SimUnknown, AnswersAsSet) {
  struct cRow {
    eSimDialect dialect;
    eSimUnknown how;
    std::string unknown, blank;
  };
  constexpr auto SCIP1 = eSimDialect::SCIP1, SCIP2 = eSimDialect::SCIP2;
  const cRow rows[] = {{SCIP2, eSimUnknown::STATUS, "XX\n0Ee\n\n", "\n0Ee\n\n"},
                       {SCIP2, eSimUnknown::ECHO_ONLY, "XX\n\n", "\n\n"},
                       {SCIP2, eSimUnknown::SILENT, "", ""},
                       {SCIP1, eSimUnknown::STATUS, "XX\n1\n\n", "\n1\n\n"},
                       {SCIP1, eSimUnknown::ECHO_ONLY, "XX\n\n", "\n\n"},
                       {SCIP1, eSimUnknown::SILENT, "", ""}};
  for (const cRow& row : rows) {
    cSimSetting setting;
    setting.dialect = row.dialect;
    setting.unknownCommands = setting.blankCommands = row.how;
    cSimSensor sensor(setting);
    cRawHost host(sensor.getPath());
    const bool scip2 = row.dialect == SCIP2;
    const std::string last = scip2 ? "QT\n00P\n\n" : "L0\n0\n\n";
    host.write("XX\n\n" + last.substr(0, 3));
    EXPECT_EQ(host.readUntil(last), row.unknown + row.blank + last);
  }
}
