// What a scanner hands out while all is well, and to whom.
#include <poll.h>
#include <unistd.h>

#include <cmath>
#include <future>
#include <set>

#include "tests/scanner/scannerRig.h"

using namespace tarvo;

namespace {

struct cForm {
  eSimModel model;
  eSimDialect dialect;
  bool wideScip1;
  int cluster;
  int skippedTurns;
  std::optional<int> maxDistance;
};

std::uint32_t turnOf(const cSimSensor& sensor, const tScanPtr& scan, std::size_t taken) {
  if (!sensor.waitForSentScans(taken + 1, LONG_TIME)) throw std::runtime_error("no scan was sent");
  if (!scan->sensorClock) return sensor.getSentScans().at(taken);
  for (const std::uint32_t turn : sensor.getSentScans()) {
    if (turn * 1000 / 100 == *scan->sensorClock) return turn;  // 100 turns a second
  }
  throw std::runtime_error("a scan that was not sent");
}

}  // namespace

// Catches: distances, metres or angles that are not what the sensor sees, in either dialect, form
// and with a partial last cluster; a range that the driver cannot receive; turns that are
// miscounted.
TEST(Scanner, HandsOutWhatTheSensorSees) {
  using M = eSimModel;
  using D = eSimDialect;
  for (const cForm& form :
       {cForm{M::LONG_RANGE, D::SCIP2, false, 1, 0, {}},
        cForm{M::LONG_RANGE, D::SCIP2, false, 4, 2, 4095},
        cForm{M::SHORT_RANGE, D::SCIP2, false, 16, 0, {}},  // 43 of three characters
        cForm{M::MIDDLE_RANGE, D::SCIP1, false, 1, 0, {}},
        cForm{M::SHORT_RANGE, D::SCIP1, true, 3, 0, {}},
        cForm{M::SHORT_RANGE, D::SCIP1_SWITCH, false, 2, 0, {}}}) {
    cSimSetting setting = fast(form.dialect, form.model);
    setting.threeCharScip1 = form.wideScip1;
    const cSimSensor sensor(setting);
    cScannerOptions options(sensor.getPath());
    options.cluster = form.cluster;
    options.skippedTurns = form.skippedTurns;
    options.maxDistance = form.maxDistance;
    cScanner scanner(options);
    std::uint64_t number = 0;
    std::uint32_t turn = 0;
    for (std::size_t taken = 0; taken < 5; ++taken) {
      const tScanPtr scan = take(scanner);
      const cSensorInfo& info = *scan->sensor;
      const bool isNarrow = form.maxDistance || (form.dialect == D::SCIP1 && !form.wideScip1);
      const std::uint32_t now = turnOf(sensor, scan, taken);
      ASSERT_EQ(scan->distances, sensor.getTrueDistances(now, info.firstStep, info.lastStep,
                                                         form.cluster, isNarrow ? 4095 : INT_MAX));
      if (taken > 0 && scan->sensorClock) {
        EXPECT_EQ(scan->number - number, now - turn);
      }
      number = scan->number;
      turn = now;
      const double step = 2 * std::acos(-1) / info.stepsPerTurn;
      EXPECT_NEAR(scan->angleMin, (info.firstStep - info.frontStep) * step, 1e-9);
      EXPECT_NEAR(scan->angleIncrement, form.cluster * step, 1e-9);
      EXPECT_NEAR(
          scan->angleMax,
          scan->angleMin + static_cast<double>(scan->ranges.size() - 1) * scan->angleIncrement,
          1e-9);
      for (std::size_t i = 0; i < scan->ranges.size(); ++i) {
        const int distance = scan->distances[i];
        const bool isFar = distance > info.maxDistance || (form.maxDistance && distance == 4095);
        const float metres = isFar ? INFINITY : static_cast<float>(distance) / 1000;
        if (distance < info.minDistance)
          EXPECT_TRUE(std::isnan(scan->ranges[i]));
        else
          EXPECT_FLOAT_EQ(scan->ranges[i], metres);
      }
    }
  }
}

// Catches: steps or angles that are ignored, or that reach beyond the sensor without a word.
TEST(Scanner, ScansThePartThatWasAskedFor) {
  const cSimSensor sensor(fast());
  cScannerOptions options(sensor.getPath());
  options.firstAngle = -std::acos(-1) / 2;
  options.lastStep = 400;
  cScanner scanner(options);
  const tScanPtr scan = take(scanner);
  EXPECT_NEAR(scan->angleMin, -std::acos(-1) / 2, 1e-9);
  EXPECT_EQ(scan->distances.size(), 400U - 128 + 1);
  options.lastStep = 726;
  cScanner other(options);
  scanner.stop();
  EXPECT_TRUE(comesTo(other, eState::WAITING, eProblem::RANGE_IMPOSSIBLE));
  EXPECT_NE(other.getHealth().problem.hint.find("from 128 to 725"), std::string::npos);
}

// Catches: a subscription that takes another's scans, keeps the oldest instead of the newest, or
// miscounts what it dropped; a descriptor that is readable without a scan, or not with one.
TEST(Subscription, EachSeesEveryScan) {
  const cSimSensor sensor(fast());
  cScanner scanner(sensor.getPath());
  cSubscription all = scanner.subscribe(100), few = scanner.subscribe(3);
  pollfd waiting{all.getDescriptor(), POLLIN, 0};
  for (std::uint64_t number = take(scanner)->number, i = 0; i < 20; ++i) {
    EXPECT_EQ(poll(&waiting, 1, LONG), 1);
    EXPECT_EQ(all.next(0ms)->number, number + i);
  }
  scanner.stop();
  while (all.next(0ms)) {
  }
  EXPECT_EQ(poll(&waiting, 1, 0), 0);
  EXPECT_EQ(all.getDropped(), 0U);
  EXPECT_EQ(few.getDropped(), scanner.getHealth().delivered - 3);
  EXPECT_GE(scanner.getHealth().dropped, few.getDropped());
  const tScanPtr newest = few.latest();
  ASSERT_TRUE(newest);
  EXPECT_FALSE(few.next(LONG_TIME)) << "a stopped source has no more";
  EXPECT_TRUE(few.isEnded());
}

// Catches: a callback that is called after its end, one that throws and ends the host, a stop or an
// end of the scanner from within one that hangs.
TEST(Callback, MayEndItselfAndItsScanner) {
  const cSimSensor sensor(fast());
  std::atomic<int> called{0}, thrown{0};
  auto scanner = std::make_unique<cScanner>(sensor.getPath());
  auto throwing = scanner->subscribe([&](const tScanPtr&) {
    ++thrown;
    throw std::runtime_error("the host's own");
  });
  std::shared_ptr<void> ending;
  std::promise<void> isMade;
  ending = scanner->subscribe([&, made = isMade.get_future().share()](const tScanPtr&) {
    made.wait();
    ++called;
    ending.reset();
  });
  isMade.set_value();
  for (int i = 0; i < 5; ++i) take(*scanner);
  EXPECT_EQ(called, 1);
  EXPECT_EQ(thrown, 1);
  auto stopping = scanner->subscribe([&](const tScanPtr&) { scanner->stop(); });
  EXPECT_TRUE(comesTo(*scanner, eState::STOPPED));
  stopping.reset();
  scanner->start();
  std::promise<void> isGone;
  auto destroying = scanner->subscribe([&](const tScanPtr&) {
    scanner.reset();
    isGone.set_value();
  });
  EXPECT_EQ(isGone.get_future().wait_for(LONG_TIME), std::future_status::ready);
  EXPECT_TRUE(eventually([&] { return !sensor.isScanning(); })) << "the laser is on";
}

// Catches: two scanners of a process that share something; a scan lost while 16 run; words on a
// standard stream, of the search, the driver or the scanner.
TEST(Scanner, ManyRunSideBySideWithoutAWord) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  {
    std::vector<std::unique_ptr<cSimSensor>> sensors;
    std::vector<std::unique_ptr<cScanner>> scanners;
    for (int i = 0; i < 16; ++i) {
      cSimSetting setting = fast(i % 4 == 3 ? eSimDialect::SCIP1 : eSimDialect::SCIP2);
      setting.rate = 40;
      setting.seed = static_cast<std::uint32_t>(i + 1);
      // A pty's own path may soon be another test's, and the scanners go on looking at theirs.
      setting.link =
          testing::TempDir() + "many-" + std::to_string(getpid()) + "-" + std::to_string(i);
      sensors.push_back(std::make_unique<cSimSensor>(setting));
      scanners.push_back(std::make_unique<cScanner>(setting.link));
    }
    std::set<std::string> serials;
    for (auto& scanner : scanners) {
      for (int i = 0; i < 5; ++i) serials.insert(take(*scanner)->sensor->serial);
      EXPECT_EQ(scanner->getHealth().damaged, 0U);
    }
    EXPECT_EQ(serials.size(), 16U);
    sensors.clear();  // pulls all cables
    for (auto& scanner : scanners)
      EXPECT_TRUE(comesTo(*scanner, eState::WAITING, eProblem::DEVICE_MISSING));
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "");
}

// What a line's jitter does to stamps, the sensor's clock is asked by itself.
// Catches: a first ray that is stamped at the end of its turn, UTC that is another moment than the
// monotonic stamp.
TEST(Scanner, StampsTheFirstRay) {
  cSimSetting setting = fast(eSimDialect::SCIP2, eSimModel::LONG_RANGE);
  setting.rate = 0;
  const cSimSensor sensor(setting);
  cScanner scanner(sensor.getPath());
  for (int i = 0; i < 40; ++i) {
    const tScanPtr scan = take(scanner);
    EXPECT_EQ(scan->stampUtc - scan->stampMonotonic, scan->arrivalUtc - scan->arrivalMonotonic);
    EXPECT_GT(scan->arrivalMonotonic - scan->stampMonotonic, 24000000) << "the turn takes 25 ms";
  }
}
