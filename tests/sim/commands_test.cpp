#include "tests/sim/cRawHost.h"

using D = eSimDialect;
using M = eSimModel;

// What one sensor answers in turn: "command>status|command>status", the sums typed by hand.
const std::tuple<D, M, const char*> DIALOGUES[] = {
    {D::SCIP2, M::SHORT_RANGE,
     "QT>00P|BM>00P|BM>02R|QT>00P|BM>00P|RS>00P|BM>00P|RT>00P|TM0>00P|TM2>00P|CR05>00P|CR05>03S|"
     "CR11>02R|CR99>00P|CRxx>01Q|HS1>00P|HS1>02R|HS0>00P|HS2>01Q"},
    {D::SCIP2, M::SHORT_RANGE,
     "GD0044072501>10Q|GS0044072501;1>10Q|GDx044072501>01Q|GD0044x72501>02R|GD00440725x1>03S|"
     "GD0044072601>04T|GD0045004401>05U|GD004407250>0Cc|GD00440725010>0Dd"},
    {D::SCIP2, M::LONG_RANGE,
     "MDx000108001000>01Q|MD0000108.01000>02R|MS00001080 1000>03S|MD0000108101000>04T|"
     "MD0002000101000>05U|MD000010800100>0Cc|MD00001080010000>0Dd|MD0000108001-00>06V|"
     "MD00001080010x0>07W|CR05>04T|HS1>04T|SS019200>04T|SSx>0Cc"},
    {D::SCIP2, M::SHORT_RANGE,
     "TM1>04T|TM2;3>03S|TM3>01Q|TM>0Cc|BM>00P|TM0>00P|TM0>02R|VV>0Aa|BM>0Aa|TM2>00P|"
     "GD0044072501>10Q"},
    {D::SCIP2, M::SHORT_RANGE,
     "QT;0123456789abcdef>00P|QT;Z ._+@>00P|QT;0123456789abcdefg>0Gg|QT;1;2>0Hh|V>0Ee|VV0>0Dd"},
    {D::SCIP1, M::SHORT_RANGE,
     "L2>1|SCIP2.0>1|VV;1>1|G04404301>1|G00076901>1|G0000010>1|G000001001>1|S0120001234567>1|"
     "S019200123456>1|L0>0|L1>0"}};

// Catches: a wrong status, sum, echo or line end of any command, and a state that a command does
// not change.
TEST(SimCommands, AreAnswered) {
  for (const auto& [dialect, model, dialogue] : DIALOGUES) {
    cSimSetting setting;
    setting.dialect = dialect;
    setting.model = model;
    cRawHost host(setting);
    std::istringstream exchanges(dialogue);
    for (std::string command, status; std::getline(exchanges, command, '>');) {
      std::getline(exchanges, status, '|');
      EXPECT_EQ(host.ask(command), command + "\n" + status + "\n\n") << dialogue;
    }
  }
}

// Catches: a line end that is missed or counted twice; commands lost when several come at once; a
// repetition answered like the first; a time without its sum.
TEST(SimCommands, AreLines) {
  cSimSetting setting;
  setting.blankCommands = eSimUnknown::STATUS;
  cRawHost host(setting);
  host.write("\r\nQT\n\nBM\rTM2;");
  EXPECT_EQ(host.readUntil("BM\n00P\n\n"), "\n0Ee\n\nQT\n00P\n\n\n0Ee\n\nBM\n00P\n\n");
  EXPECT_EQ(host.ask("5"), "TM2;5\n03S\n\n");
  host.write("HS1\nHS1\n");
  EXPECT_EQ(host.readUntil("0Bb\n\n"), "HS1\n00P\n\nHS1\n0Bb\n\n");
  const std::string kept(128, 'x');
  EXPECT_EQ(host.ask(kept + "yz"), kept + "\n0Bb\n\n");
  host.ask("TM0");
  EXPECT_EQ(host.ask("TM1;a").size(), sizeof "TM1;a\n00P\ntime+\n\n" - 1);
  EXPECT_EQ(host.sensor.getCommands().size(), 8u);
}
