// The code that the guide's pages about errors and time stamps show.
#include <gtest/gtest.h>

#include <boost/date_time/posix_time/posix_time.hpp>

#include "sim/tarvosim.h"
#include "tarvolink/tarvolink.h"

namespace {

std::string toWords(int error) {
  const int status = error & cSCIPError::ESTATUS_MASK;
  if ((error & cSCIPError::ESCIP1_STATUS) != 0) return "SCIP 1.x status " + std::to_string(status);
  if ((error & cSCIPError::ESCIP2_STATUS) != 0) return "SCIP 2.0 status " + std::to_string(status);
  if ((error & cSCIPError::ESCIP2_EXTSTATUS) != 0)
    return std::string("SCIP 2.0 status 0") + static_cast<char>(status);
  if (error == cSCIPError::EINVALID_STATUS) return "damaged answer";
  return error == 0 ? "success" : "no answer";
}

std::string toText(const cScan& scan) {
  return boost::posix_time::to_iso_extended_string(scan.timeStamp.time);
}

/// What "BM" comes to on a sensor whose answer to it has `fault`.
std::string causeOf(eSimFault fault, int value) {
  cSimSensor simulated{cSimSetting{}};
  const auto sensor = cSensorDriverManager::create(simulated.getPath());
  simulated.setFault(fault, value, "BM");
  auto& driver = dynamic_cast<cSensorDriverSCIP2&>(*sensor);
  const int error = driver.doRaw2("BM", 0)->error;
  return toWords(error);
}

}  // namespace

TEST(DocumentedCauseTest, IsInTheCodeWord) {
  EXPECT_EQ(causeOf(eSimFault::STATUS, 0), "success");
  EXPECT_EQ(causeOf(eSimFault::STATUS, 2), "SCIP 2.0 status 2");
  EXPECT_EQ(causeOf(eSimFault::STATUS, simStatus("0E")), "SCIP 2.0 status 0E");
  EXPECT_EQ(causeOf(eSimFault::WRONG_SUM, 0), "damaged answer");
  EXPECT_EQ(causeOf(eSimFault::NO_ANSWER, 0), "no answer");
}

TEST(DocumentedCauseTest, IsWithTheDriverOfScip1) {
  cSimSetting setting;
  setting.dialect = eSimDialect::SCIP1;
  const cSimSensor simulated(setting);
  const auto sensor = cSensorDriverManager::create(simulated.getPath());
  EXPECT_EQ(sensor->getSCIP1IF()->doLaser(true), 0);
  EXPECT_EQ(toWords(sensor->getErr()), "SCIP 1.x status 0");
}

TEST(DocumentedTimeStampTest, IsReadableLocalTime) {
  cScan scan(0, 0, 0);
  EXPECT_EQ(toText(scan), "1970-01-01T00:00:00");
}
