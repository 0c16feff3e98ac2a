// Time stamps, the zone, and the singleton that holds it.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <ctime>
#include <set>
#include <thread>

#include "tarvolink/base/cTime.h"
#include "tarvolink/base/cTimezoneInfo.h"
#include "tests/support/cCaseName.h"

namespace {

using boost::posix_time::time_duration;

TEST(Time, beginsIn1970) {
  const boost::posix_time::ptime epoch(boost::gregorian::date(1970, 1, 1));
  EXPECT_EQ(kavTBX::cTime().time, epoch);
  EXPECT_EQ(kavTBX::cTime(epoch + boost::posix_time::seconds(1)).time - epoch,
            boost::posix_time::seconds(1));
}

struct cZone {
  const char* name;
  const char* zone;  // as tzset(3) takes it
  time_duration offset;
  int hours;
};

class TimezoneDeathTest : public testing::TestWithParam<cZone> {};

// In a child each: the zone is asked for once in a process. Would catch the offset of today.
TEST_P(TimezoneDeathTest, isTheOffsetAtTheEpoch) {
  const cZone& zone = GetParam();
  EXPECT_EXIT(
      {
        setenv("TZ", zone.zone, 1);
        tzset();
        const auto info = kavTBX::cTimezones::instance();
        setenv("TZ", "XYZ-5", 1);
        tzset();
        const bool isSame = kavTBX::cTimezones::instance() == info;
        std::_Exit(
            isSame && info->utcOffset == zone.offset && info->utcOffsetHours == zone.hours ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

INSTANTIATE_TEST_SUITE_P(
    Zones, TimezoneDeathTest,
    testing::Values(cZone{"utc", "UTC0", time_duration(0, 0, 0), 0},
                    cZone{"nineEast", "<+09>-9", time_duration(9, 0, 0), 9},
                    cZone{"threeAndAHalfWest", "<-0330>3:30", -time_duration(3, 30, 0), -3},
                    cZone{"summerInJuly", "CET-1CEST,M3.5.0,M10.5.0/3", time_duration(1, 0, 0), 1},
                    cZone{"summerInJanuary", "NZST-12NZDT,M9.5.0,M4.1.0/3", time_duration(13, 0, 0),
                          13}),
    cCaseName());

/// Counts how often it is made, slowly.
struct cCounted {
  static inline std::atomic<int> made{0};
  cCounted() {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ++made;
  }
};

TEST(Singleton, isMadeOnceForAllThreads) {
  using tSingleton = kavTBX::cSingleton<cCounted, kavTBX::LazyInstantiation, boost::mutex>;
  boost::shared_ptr<cCounted> seen[8];
  std::vector<std::thread> threads;
  for (auto& place : seen) threads.emplace_back([&place] { place = tSingleton::instance(); });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(cCounted::made, 1);
  EXPECT_EQ(std::set<boost::shared_ptr<cCounted>>(std::begin(seen), std::end(seen)).size(), 1u);
}

}  // namespace
