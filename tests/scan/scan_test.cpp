// Scans, their filling, the list in which they wait, and the characters they come in.
#include <gtest/gtest.h>

#include <boost/weak_ptr.hpp>
#include <limits>

#include "tarvolink/driver/cSensorDriver.h"
#include "tarvolink/scan/cScanFactory.h"
#include "tarvolink/scan/tLockableList.h"
#include "tests/support/cCaseName.h"

namespace {

using tScan = boost::shared_ptr<cScan>;

struct cRoom {
  const char* name;
  double first;
  double last;
  double step;
  std::size_t reserved;
};

class ScanRoom : public testing::TestWithParam<cRoom> {};

// Would catch a reservation of gigabytes, or an exception, for a cluster of 0.
TEST_P(ScanRoom, isTheWholeQuotientIfThatIsSane) {
  const cScan scan(GetParam().first, GetParam().last, GetParam().step);
  EXPECT_EQ(scan.points.capacity(), GetParam().reserved);
  EXPECT_EQ(scan.timeStamp.time, boost::posix_time::ptime(boost::gregorian::date(1970, 1, 1)));
}

using tLimits = std::numeric_limits<double>;

INSTANTIATE_TEST_SUITE_P(
    Scan, ScanRoom,
    testing::Values(cRoom{"usual", -2.0944, 2.0944, 0.0061359, 682}, cRoom{"empty", 0, 0, 0.1, 0},
                    cRoom{"noStep", -2, 2, 0, 0}, cRoom{"nothingByNothing", 0, 0, 0, 0},
                    cRoom{"backwards", 1, 0, 0.1, 0}, cRoom{"negativeStep", 1, 0, -0.25, 4},
                    cRoom{"most", 0, 65536, 1, 65536}, cRoom{"tooMany", 0, 65537, 1, 0},
                    cRoom{"huge", 0, 1e300, 1e-300, 0},
                    cRoom{"notANumber", tLimits::quiet_NaN(), 1, 1, 0},
                    cRoom{"infinite", -tLimits::infinity(), tLimits::infinity(), 1, 0}),
    cCaseName());

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

TEST(ScanFactoryDeathTest, stopsOnAMissingScan) {
  EXPECT_DEATH(cScanFactory().addData({1}), "px != 0");
}

/// A list of scans whose first angles are 0, 1, 2, ...
void fill(cLockableScanList& scans, int count) {
  for (int i = 0; i < count; ++i) lockable::append(scans, tScan(new cScan(i, i, 1)));
}

TEST(LockableList, takesFromBothEndsAndFromTheMiddle) {
  cLockableScanList scans;
  fill(scans, 5);
  EXPECT_EQ(lockable::takeLast(scans)->firstAngle, 4);
  EXPECT_EQ(lockable::takeFirst(scans)->firstAngle, 0);
  for (const int beyond : {-1, 3, std::numeric_limits<int>::max()}) {
    EXPECT_FALSE(lockable::takeAt(scans, beyond));
  }
  EXPECT_EQ(lockable::takeAt(scans, 1)->firstAngle, 2);
  EXPECT_EQ(lockable::count(scans), 2);
  EXPECT_EQ(lockable::takeAt(scans, 1)->firstAngle, 3);
  EXPECT_EQ(lockable::takeAt(scans, 0)->firstAngle, 1);
  EXPECT_FALSE(lockable::takeFirst(scans));
  EXPECT_FALSE(lockable::takeLast(scans));
  EXPECT_FALSE(lockable::takeAt(scans, 0));
  lockable::purge(scans);
  EXPECT_TRUE(lockable::isEmpty(scans));
}

TEST(LockableList, purgeReleasesWhatNobodyElseHolds) {
  cLockableScanList scans;
  fill(scans, 2);
  const tScan held = scans.list.front();
  const boost::weak_ptr<cScan> unheld = scans.list.back();
  lockable::purge(scans);
  EXPECT_TRUE(lockable::isEmpty(scans));
  EXPECT_TRUE(unheld.expired());
  EXPECT_EQ(held.use_count(), 1);
}

struct cEncoded {
  const char* name;
  std::string data;
  int width;
  std::vector<int> values;
};

class Decode6bit : public testing::TestWithParam<cEncoded> {};

TEST_P(Decode6bit, decodes) {
  EXPECT_EQ(cSensorDriver::decode6bit(GetParam().data, GetParam().width), GetParam().values);
}

INSTANTIATE_TEST_SUITE_P(
    Scan, Decode6bit,
    testing::Values(cEncoded{"three", "1Dh", 3, {5432}}, cEncoded{"four", "m2@0", 4, {16000000}},
                    cEncoded{"several", "0mCB", 2, {61, 1234}},
                    cEncoded{"largest", "oooo", 4, {16777215}}, cEncoded{"nothing", "", 2, {}},
                    cEncoded{"remainder", "000", 2, {}}, cEncoded{"noWidth", "0", 0, {}},
                    cEncoded{"negativeWidth", "00", -2, {}},
                    cEncoded{"belowZero", " 0", 2, {-1024}},
                    cEncoded{"highByte", "\xFF\x30", 2, {-49 * 64}}),
    cCaseName());

}  // namespace
