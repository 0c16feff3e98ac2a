// Information and control commands: one exchange each.
#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/driver/cScriptedDriver.h"

namespace {

using tLines = std::vector<std::string>;

/// An information line: key, ":", value, ";", sum.
std::string field(const std::string& keyAndValue) {
  return keyAndValue + ";" + cScriptedPeer::sum(keyAndValue) + "\n";
}

std::string answer(const std::string& body) { return summed("00") + "\n" + body; }

/// Gives these answers (status line and body) in turn.
cScriptedPeer::tRule inTurn(const tLines& answers) {
  return [answers, next = std::size_t{0}](const std::string& line) mutable {
    return line + "\n" + answers.at(next++) + "\n";
  };
}

}  // namespace

// Would catch: another command on the wire, a refusal taken for success.
TEST(Commands, SendTheirLineAndTellTheAnswer) {
  using tOperation = int (cSensorDriverSCIP2::*)();
  for (const auto& [operate, line] : std::vector<std::pair<tOperation, std::string>>{
           {&cSensorDriverSCIP2::startStoringScan, "BM"},
           {&cSensorDriverSCIP2::stopAll, "QT"},
           {&cSensorDriverSCIP2::resetURG, "SS"},
           {&cSensorDriverSCIP2::updateStatus, "II"},
           {&cSensorDriverSCIP2::doVersion, "VV"}}) {
    cScriptedDriver driver(inTurn({summed("00") + "\n", summed("01") + "\n", summed("0E") + "\n"}));
    for (const int result : {0, -1, -1}) EXPECT_EQ((*driver.driver.*operate)(), result) << line;
    EXPECT_EQ(driver.peer.waitLines(3), (tLines{line + ";1", line + ";2", line + ";3"}));
  }
}

// Would catch: an operation without a command of its own that sends one all the same.
TEST(Commands, FixedAnswersSendNothing) {
  cScriptedDriver driver(inTurn({answer("")}));
  for (const int result : {driver->doSpeed(19200), driver->setCommSpeed(19200), driver->doRaw("VV"),
                           driver->resumeScan(), driver->scansToGo(), driver->abortScan()}) {
    EXPECT_EQ(result, -1);
  }
  EXPECT_FALSE(driver->getScanFirst(0));
  driver->purgeScan();
  EXPECT_EQ(driver->doLaser(false), 0);
  EXPECT_EQ(driver.peer.waitLines(1), tLines{"BM;1"}) << "the first line that was heard";
}

// Would catch: values trimmed or cut, keys taken for others, a refusal that empties what is known.
TEST(Commands, VersionTextsAreKeptAsTheyStand) {
  const std::string body = field("VEND:a vendor\xE4") + field("OTHR:unknown") +
                           field("PROD:a;b:c(d)") + field("FIRM:1.0<-Default") + field("PROT:") +
                           field("SERI:H01");
  cScriptedDriver driver(inTurn(
      {answer(body), summed("0E") + "\n" + field("VEND:other"), "00x\n" + field("VEND:other")}));
  EXPECT_EQ(driver->getSCIP2IF()->fetchVersionStr(), 0);
  EXPECT_EQ(driver->getSCIP1IF()->getResponseBody(), body);
  for (int refusal = 0; refusal < 2; ++refusal) EXPECT_EQ(driver->fetchVersionStr(), -1);
  EXPECT_EQ((tLines{driver->getVend(), driver->getProd(), driver->getFirm(), driver->getProt(),
                    driver->getSerial(), driver->getLastRawCommand()}),
            (tLines{"a vendor\xE4", "a;b:c(d)", "1.0<-Default", "", "H01", ""}));
}

// Would catch: a number in another field, values read behind a bad sum, a crash by a short line.
TEST(Commands, ParametersAreTheNumbersAtTheBeginning) {
  cScriptedDriver driver(
      inTurn({answer(field("MODL:another") + field("DMIN:20") + field("DMAX:4095[mm]") +
                     field("ARES:1024") + field("AMIN:-3") + field("AMAX:725") +
                     field("AFRT: 384") + field("SCAN:fast")),
              answer(field("DMIN:21") + "DMAX:4096;x\n" + field("ARES:1025")),
              answer(field("DMIN:22") + field("DMAX") + field("ARES:1026")), answer("")}));
  const auto numbers = [&] {
    return std::vector<int>{driver->getMinDist(),   driver->getMaxDist(), driver->getNumSpot(),
                            driver->getMinSpot(),   driver->getMaxSpot(), driver->getFrontSpot(),
                            driver->getScanSpeed(), driver->getErr()};
  };
  EXPECT_EQ(driver->fetchParameters(), 0);
  EXPECT_EQ(numbers(), (std::vector<int>{20, 4095, 1024, -3, 725, 384, 0, 0}));
  EXPECT_EQ(driver->getProd(), "") << "MODL is not the product";
  EXPECT_EQ(driver->fetchParameters(), -1);
  EXPECT_THROW(driver->fetchParameters(), std::out_of_range);
  EXPECT_EQ(numbers(), (std::vector<int>{22, 4095, 1024, -3, 725, 384, 0, 0}));
  EXPECT_EQ(driver->fetchParameters(), 0) << "the driver goes on";
}

// Would catch: a status number or letter that is read as another code word.
TEST(Commands, StatusIsToldAsACodeWord) {
  // The sensor gives the command back as its status line.
  cScriptedDriver driver([](const std::string& line) {
    return line + "\n" + line.substr(0, line.find(';')) + "\n\n\n";
  });
  for (const auto& [status, error] :
       std::vector<std::pair<std::string, int>>{{summed("00"), 0},
                                                {summed("98"), cSCIPError::ESCIP2_STATUS | 98},
                                                {summed("0a"), cSCIPError::ESCIP2_EXTSTATUS | 'a'},
                                                {"00x", cSCIPError::EINVALID_STATUS}}) {
    EXPECT_EQ(driver->doRaw2(status, 0)->error, error) << status;
    EXPECT_EQ(driver->getErr(), 0) << "the link's own word: the record came whole";
  }
}
