// The zone, and the singleton that holds it.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <ctime>
#include <thread>

#include "tarvolink/base/cTimezoneInfo.h"
#include "tests/support/cCaseName.h"

namespace {

using boost::posix_time::time_duration;

struct cZone {
  const char* name;
  const char* zone;  // as tzset(3) takes it
  time_duration offset;
  int hours;
};

class TimezoneDeathTest : public testing::TestWithParam<cZone> {};

void setZone(const char* zone) {
  setenv("TZ", zone, 1);
  tzset();
}

[[noreturn]] void compare(const cZone& expected) {
  setZone(expected.zone);
  const auto info = kavTBX::cTimezones::instance();
  setZone("EST5");
  const bool isRight = info->utcOffset == expected.offset && info->utcOffsetHours == expected.hours;
  std::_Exit(isRight && kavTBX::cTimezones::instance() == info ? 0 : 1);
}

// In a child each: the zone is asked for once in a process. Would catch the offset of today.
TEST_P(TimezoneDeathTest, isTheOffsetAtTheEpoch) {
  EXPECT_EXIT(compare(GetParam()), testing::ExitedWithCode(0), "");
}

constexpr auto CENTRAL_EUROPE = "CET-1CEST,M3.5.0,M10.5.0/3";  // summer in July
constexpr auto NEW_ZEALAND = "NZST-12NZDT,M9.5.0,M4.1.0/3";    // summer in January

INSTANTIATE_TEST_SUITE_P(
    Zones, TimezoneDeathTest,
    testing::Values(cZone{"nineEast", "<+09>-9", time_duration(9, 0, 0), 9},
                    cZone{"threeAndAHalfWest", "<-0330>3:30", -time_duration(3, 30, 0), -3},
                    cZone{"centralEurope", CENTRAL_EUROPE, time_duration(1, 0, 0), 1},
                    cZone{"newZealand", NEW_ZEALAND, time_duration(13, 0, 0), 13}),
    cCaseName());

constexpr int ASKING = 8;

/// Counts how often it is made: not before all threads have come to ask for it.
struct cCounted {
  static inline std::atomic<int> asked{0};
  static inline std::atomic<int> made{0};
  cCounted() {
    while (asked < ASKING) std::this_thread::yield();
    ++made;
  }
};

TEST(Singleton, isMadeOnceForAllThreads) {
  using tSingleton = kavTBX::cSingleton<cCounted, kavTBX::LazyInstantiation, boost::mutex>;
  boost::shared_ptr<cCounted> seen[ASKING];
  std::vector<std::thread> threads;
  for (auto& place : seen) {
    threads.emplace_back([&place] {
      ++cCounted::asked;
      place = tSingleton::instance();
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(cCounted::made, 1);
  for (const auto& place : seen) EXPECT_EQ(place, seen[0]);
}

}  // namespace
