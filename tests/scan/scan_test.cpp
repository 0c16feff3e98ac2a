// Scans, their filling, the list in which they wait, and the characters they come in.
#include <gtest/gtest.h>

#include <limits>

#include "tarvolink/driver/cSensorDriver.h"
#include "tarvolink/scan/cScanFactory.h"
#include "tarvolink/scan/tLockableList.h"

namespace {

// Would catch a reservation of gigabytes, or an exception, for a cluster of 0.
TEST(Scan, reservesTheWholeQuotientIfThatIsSane) {
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

// Would catch a line's points at the angles of the first one's.
TEST(ScanFactory, numbersPointsOnFromLineToLine) {
  cScanFactory factory;
  factory.addData({});  // with no scan set: nothing to add, nothing to check
  factory.scan.reset(new cScan(-2.0944, 2.0944, 0.0061359));
  factory.addData({0, 19, 5432});
  factory.addData(std::vector<int>(680, -7));
  const std::vector<cScanPoint>& points = factory.scan->points;
  ASSERT_EQ(points.size(), 683u);
  for (std::size_t i = 0; i < points.size(); ++i) {
    EXPECT_EQ(points[i].angle, -2.0944 + static_cast<double>(i) * 0.0061359);
    EXPECT_EQ(points[i].distance, i < 3 ? (std::vector<double>{0, 19, 5432})[i] : -7);
  }
}

// Would catch the wrong end, a place beyond the list taken, and scans that a purge leaves alive.
TEST(LockableList, takesFromBothEndsAndFromTheMiddle) {
  using tScan = boost::shared_ptr<cScan>;
  cLockableScanList scans;
  for (int i = 0; i < 5; ++i) lockable::append(scans, tScan(new cScan(i, i, 1)));
  EXPECT_EQ(lockable::takeLast(scans)->firstAngle, 4);
  EXPECT_EQ(lockable::takeFirst(scans)->firstAngle, 0);
  for (const int beyond : {-1, 3}) EXPECT_FALSE(lockable::takeAt(scans, beyond));
  EXPECT_EQ(lockable::takeAt(scans, 1)->firstAngle, 2);
  EXPECT_EQ(lockable::takeAt(scans, 1)->firstAngle, 3);
  const tScan held = scans.list.front();
  lockable::purge(scans);
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_FALSE(lockable::takeFirst(scans));
  EXPECT_FALSE(lockable::takeLast(scans));
  EXPECT_FALSE(lockable::takeAt(scans, 0));
}

// Would catch a wrong value of any width, and half a value decoded.
TEST(Decode6bit, decodes) {
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
