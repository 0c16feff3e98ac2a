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

}  // namespace

// Catches: code in the guide that reports another cause; the code words have tests of their own.
TEST(DocumentedCode, ReportsCauseAndTime) {
  cSimSensor simulated{cSimSetting{}};
  const auto sensor = cSensorDriverManager::create(simulated.getPath());
  simulated.setFault(eSimFault::STATUS, simStatus("0E"), "BM");
  auto& driver = dynamic_cast<cSensorDriverSCIP2&>(*sensor);
  const int error = driver.doRaw2("BM", 0)->error;
  EXPECT_EQ(toWords(error), "SCIP 2.0 status 0E");
  EXPECT_EQ(toWords(cSCIPError::ESCIP2_STATUS | 2), "SCIP 2.0 status 2");
  EXPECT_EQ(toWords(cSCIPError::ESCIP1_STATUS), "SCIP 1.x status 0");
  EXPECT_EQ(toWords(cSCIPError::EINVALID_STATUS), "damaged answer");
  EXPECT_EQ(toWords(cSCIPError::ETIMEOUT_ECHO), "no answer");
  EXPECT_EQ(cSCIPError::getErrorString(0x400, ""), "Error String Not implemented yet.");
  EXPECT_EQ(toText(cScan(0, 0, 0)), "1970-01-01T00:00:00");
}
