#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/driver/cScriptedSensor.h"
#include "tests/driver/support.h"

namespace {

/// A driver on a sensor that answers every command alike.
class cInformation : public testing::Test {
 protected:
  void answer(const std::string& body, const std::string& statusLine = summed("00")) {
    sensor.setScript([body, statusLine](const std::string& line) {
      return line + "\n" + statusLine + "\n" + body + "\n";
    });
  }

  cScriptedSensor sensor{[](const std::string&) { return std::string(); }};
  tDriver2 driver = openDriver(sensor.getPath());
};

TEST_F(cInformation, VersionTextsAreKeptAsTheyStand) {
  answer(field("VEND:a vendor") + field("XXXX:unknown") + field("PROD:a;b:c(d)") +
         field("FIRM:1.0<-Default setting by user") + field("PROT:") + field("SERI:H01"));
  EXPECT_EQ(driver->fetchVersionStr(), 0);
  EXPECT_EQ(driver->getVend(), "a vendor");
  EXPECT_EQ(driver->getProd(), "a;b:c(d)");
  EXPECT_EQ(driver->getFirm(), "1.0<-Default setting by user");
  EXPECT_EQ(driver->getProt(), "");
  EXPECT_EQ(driver->getSerial(), "H01");
  EXPECT_EQ(sensor.getCommands(), std::vector<std::string>{"VV;1"});
}

TEST_F(cInformation, ParametersAreTheNumbersAtTheBeginning) {
  answer(field("MODL:another") + field("DMIN:20") + field("DMAX:4095[mm]") + field("ARES:1024") +
         field("AMIN:-3") + field("AMAX:725") + field("AFRT: 384") + field("SCAN:fast"));
  EXPECT_EQ(driver->fetchParameters(), 0);
  EXPECT_EQ(driver->getMinDist(), 20);
  EXPECT_EQ(driver->getMaxDist(), 4095);
  EXPECT_EQ(driver->getNumSpot(), 1024);
  EXPECT_EQ(driver->getMinSpot(), -3);
  EXPECT_EQ(driver->getMaxSpot(), 725);
  EXPECT_EQ(driver->getFrontSpot(), 384);
  EXPECT_EQ(driver->getScanSpeed(), 0);
  EXPECT_EQ(driver->getProd(), "") << "MODL is not the product";
}

TEST_F(cInformation, ABadSumEndsTheReadingAndKeepsWhatCameBefore) {
  answer(field("DMIN:20") + "DMAX:4095;x\n" + field("ARES:1024"));
  EXPECT_EQ(driver->fetchParameters(), -1);
  EXPECT_EQ(driver->getMinDist(), 20);
  EXPECT_EQ(driver->getMaxDist(), 0);
  EXPECT_EQ(driver->getNumSpot(), 0);
}

TEST_F(cInformation, ALineWithoutAValueRaises) {
  answer(field("DMIN:20") + "DMAX;" + summed("DMAX").back() + "\n");
  EXPECT_THROW(driver->fetchParameters(), std::out_of_range);
  EXPECT_EQ(driver->getMinDist(), 20);
  answer(field("VEND:again"));
  EXPECT_EQ(driver->fetchVersionStr(), 0) << "the driver goes on";
}

TEST_F(cInformation, ARefusalChangesNothing) {
  answer(field("VEND:a vendor"));
  ASSERT_EQ(driver->fetchVersionStr(), 0);
  for (const std::string& refusal : {summed("0E"), summed("98"), std::string("00x")}) {
    answer(field("VEND:another"), refusal);
    EXPECT_EQ(driver->fetchVersionStr(), -1) << refusal;
    EXPECT_EQ(driver->getVend(), "a vendor");
  }
}

struct cRemark {
  eSimRemark remark;
  int result;
  std::string text;
};

std::ostream& operator<<(std::ostream& out, const cRemark& of) {
  return out << static_cast<int>(of.remark);
}

class cStatusText : public testing::TestWithParam<cRemark> {};

TEST_P(cStatusText, IsReadWhereTheSumsHold) {
  cSimSetting setting;
  setting.remark = GetParam().remark;
  cSimSensor sensor(setting);
  const tDriver2 driver = openDriver(sensor.getPath());
  EXPECT_EQ(driver->updateStatus(), GetParam().result);
  EXPECT_EQ(driver->getStatus(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Remarks, cStatusText,
                         testing::Values(cRemark{eSimRemark::NONE, 0, "Sensor works well."},
                                         cRemark{eSimRemark::INSIDE_SUM, 0, "Sensor works well."},
                                         cRemark{eSimRemark::OUTSIDE_SUM, -1, ""}));

struct cStatusCase {
  std::string status;  // the line
  int error;
};

std::ostream& operator<<(std::ostream& out, const cStatusCase& of) { return out << of.status; }

class cOneExchange : public testing::TestWithParam<cStatusCase> {};

TEST_P(cOneExchange, TellsTheStatusAsACodeWord) {
  cScriptedSensor sensor(
      [](const std::string& line) { return line + "\n" + GetParam().status + "\n\n\n"; });
  const tDriver2 driver = openDriver(sensor.getPath());
  EXPECT_EQ(driver->doRaw2("VV", 0)->error, GetParam().error);
  EXPECT_EQ(driver->getErr(), 0) << "the link's own word: the record came whole";
}

INSTANTIATE_TEST_SUITE_P(
    Statuses, cOneExchange,
    testing::Values(cStatusCase{summed("00"), 0},
                    cStatusCase{summed("03"), cSCIPError::ESCIP2_STATUS | 3},
                    cStatusCase{summed("98"), cSCIPError::ESCIP2_STATUS | 98},
                    cStatusCase{summed("0E"), cSCIPError::ESCIP2_EXTSTATUS | 'E'},
                    cStatusCase{summed("0a"), cSCIPError::ESCIP2_EXTSTATUS | 'a'},
                    cStatusCase{"00x", cSCIPError::EINVALID_STATUS},
                    cStatusCase{"0", cSCIPError::EINVALID_STATUS},
                    cStatusCase{"", cSCIPError::EINVALID_STATUS}));

// Would catch: an answer that comes too late taken for good, or spoiling more than one exchange.
TEST(cLateAnswer, SpoilsOneExchange) {
  cSimSensor sensor{cSimSetting()};
  const tDriver2 driver = openDriver(sensor.getPath());
  sensor.setFault(eSimFault::LATE, 2100, "VV", 1);
  EXPECT_EQ(driver->doRaw2("VV", 0)->error, cSCIPError::ETIMEOUT_ECHO);
  ASSERT_TRUE(sensor.waitFor(&cSimCounters::records, 1, LONG_TIME));
  ASSERT_TRUE(eventually([&] { return !driver->getResponseBody().empty(); }));
  EXPECT_EQ(driver->doRaw2("PP", 0)->echo, "VV;1");
  for (const std::string command : {"II", "BM", "VV", "QT"}) {
    EXPECT_EQ(driver->doRaw2(command, 0)->echo.substr(0, 2), command);
  }
}

}  // namespace
