// Scans and the characters they come in. The list in which they wait, SCIP 1.x tests by place.
#include <gtest/gtest.h>

#include <limits>

#include "tarvolink/driver/cSensorDriver.h"
#include "tarvolink/scan/cScan.h"

namespace {

// Catches: a reservation of gigabytes, or an exception, for a cluster of 0.
TEST(Scan, ReservesTheWholeQuotientIfThatIsSane) {
  using tLimits = std::numeric_limits<double>;
  struct cRow {
    double first, last, step;
    std::size_t reserved;
  };
  for (const cRow& row : {cRow{-2.0944, 2.0944, 0.0061359, 682}, cRow{-2, 2, 0, 0},
                          cRow{0, 0, 0, 0}, cRow{1, 0, 0.1, 0}, cRow{0, 65536, 1, 65536},
                          cRow{0, 65537, 1, 0}, cRow{tLimits::quiet_NaN(), 1, 1, 0}}) {
    const cScan scan(row.first, row.last, row.step);
    EXPECT_EQ(scan.points.capacity(), row.reserved) << row.first << " to " << row.last;
    EXPECT_EQ(scan.timeStamp.time, boost::posix_time::ptime(boost::gregorian::date(1970, 1, 1)));
  }
}

// Catches: a wrong value of any width, and half a value decoded.
TEST(Decode6bit, DecodesWholeValuesOfAnyWidth) {
  struct cRow {
    std::string data;
    int width;
    std::vector<int> values;
  };
  for (const auto& [data, width, values] :
       {cRow{"1Dh", 3, {5432}}, cRow{"m2@0", 4, {16000000}}, cRow{"0mCB", 2, {61, 1234}},
        cRow{"oooo", 4, {16777215}}, cRow{"0m", 1, {0, 61}}, cRow{"000", 2, {}}, cRow{"0", 0, {}},
        cRow{" 0", 2, {-1024}}, cRow{"\xFF\x30", 2, {-49 * 64}}}) {
    EXPECT_EQ(cSensorDriver::decode6bit(data, width), values) << data;
  }
}

}  // namespace
