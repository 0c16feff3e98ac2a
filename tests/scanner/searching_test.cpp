// How a sensor is found: at which speed, how soon, and what is said where there is none.
#include <sys/file.h>

#include <fcntl.h>

#include "tests/scanner/scannerRig.h"
#include "tests/support/cCaseName.h"
#include "tests/support/cPtyPair.h"

using namespace tarvo;

namespace {

using S = cSimSetting;

struct cSearchCase {
  const char* name;
  void (*change)(cSimSetting&) = [](S&) {};
  std::optional<eSimFault> fault = {};
  int value = 0;
  const char* target = "QT";
  int times = 0;
};

const cSearchCase CASES[] = {
    {"Idle"},
    {"Scanning", [](S& setting) { setting.scanningAtStart = true; }},
    {"SilentToUnknown", [](S& setting) { setting.unknownCommands = eSimUnknown::SILENT; }},
    {"EchoesUnknown", [](S& setting) { setting.unknownCommands = eSimUnknown::ECHO_ONLY; }},
    {"AnswersBlankLines", [](S& setting) { setting.blankCommands = eSimUnknown::STATUS; }},
    {"RemarksOutsideOfSums", [](S& setting) { setting.remark = eSimRemark::OUTSIDE_SUM; }},
    {"Late", [](S&) {}, eSimFault::LATE, 250, "answer"},
    {"SilentToQuit", [](S&) {}, eSimFault::NO_ANSWER},
    {"AnswersTheThirdTime", [](S&) {}, eSimFault::NO_ANSWER, 0, "QT", 2}};

class Searching : public testing::TestWithParam<cSearchCase> {};

}  // namespace

// Catches: a sensor that is not found, at another speed or in another dialect; one that is left
// scanning, so that the next start fails; an identity or parameters that were not fetched.
TEST_P(Searching, FindsTheSensor) {
  const cSearchCase& given = GetParam();
  for (const auto& [dialect, speed, found] :
       {std::tuple(eSimDialect::SCIP2, 115200, eDialect::SCIP2),
        {eSimDialect::SCIP2, 57600, eDialect::SCIP2},
        {eSimDialect::SCIP1, 115200, eDialect::SCIP1},
        {eSimDialect::SCIP1, 57600, eDialect::SCIP1},
        {eSimDialect::SCIP1_SWITCH, 115200, eDialect::SCIP2_SWITCHED},
        {eSimDialect::SCIP1_SWITCH, 57600, eDialect::SCIP2_SWITCHED}}) {
    cSimSetting setting = fast(dialect);
    setting.speed = speed;
    given.change(setting);
    cSimSensor sensor(setting);
    if (given.fault) sensor.setFault(*given.fault, given.value, given.target, given.times);
    const cSearchResult result = cSensorSearch({sensor.getPath()}).wait().at(0);
    ASSERT_TRUE(result.sensor) << result.problem.message;
    EXPECT_FALSE(result.problem) << result.problem.message;
    EXPECT_EQ(result.sensor->lineSpeed, speed);
    EXPECT_EQ(result.sensor->serial, "S0000001");
    EXPECT_EQ(result.sensor->lastStep, dialect == eSimDialect::SCIP1 ? 724 : 725);
    const bool isScip2Already = setting.scanningAtStart && dialect == eSimDialect::SCIP1_SWITCH;
    EXPECT_EQ(result.sensor->dialect, isScip2Already ? eDialect::SCIP2 : found);
    EXPECT_FALSE(sensor.isScanning());
  }
}

INSTANTIATE_TEST_SUITE_P(All, Searching, testing::ValuesIn(CASES), cCaseName());

// Catches: a verdict that takes longer than five seconds, that has another cause, or that is a
// sensor; ports that are looked at one after the other; a babbling or an endless line that holds
// the search up.
TEST(SensorSearch, SaysWhatWasHeardWhereNothingAnswers) {
  const cPtyPair silent, gps, echo, noise, endless;
  std::atomic<bool> isOver{false};
  for (const cPtyPair* line : {&gps, &echo, &noise, &endless})
    fcntl(line->getMaster(), F_SETFL, O_NONBLOCK);
  std::thread talker([&] {
    char typed[256];
    while (!isOver) {
      [[maybe_unused]] ssize_t done = write(gps.getMaster(), "$GPGGA,123519,4807.038,N*47\r\n", 29);
      done = write(noise.getMaster(), "\x81\xFE\x05\n\xC0\n", 6);
      done = write(endless.getMaster(), std::string(500, 'x').data(), 500);
      const ssize_t count = read(echo.getMaster(), typed, sizeof typed);
      if (count > 0) done = write(echo.getMaster(), typed, static_cast<std::size_t>(count));
      std::this_thread::sleep_for(5ms);
    }
  });
  std::vector<cSearchResult> results;
  const long taken = measure([&] {
    results = cSensorSearch({silent.getPath(), gps.getPath(), echo.getPath(), noise.getPath(),
                             endless.getPath(), "/dev/no-tty", "/dev/null"})
                  .wait();
  });
  isOver = true;
  talker.join();
  EXPECT_LT(taken, 10000) << "five seconds, on a machine that does nothing else";
  const eLineContent heard[] = {eLineContent::NOTHING, eLineContent::TEXT, eLineContent::ECHOED,
                                eLineContent::GARBAGE, eLineContent::TEXT};
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_FALSE(results[i].sensor);
    EXPECT_EQ(results[i].problem.kind, eProblem::NO_SENSOR);
    ASSERT_EQ(results[i].heard.size(), 4U);
    EXPECT_EQ(results[i].heard[0].content, heard[i]) << results[i].problem.message;
  }
  EXPECT_EQ(results[5].problem.kind, eProblem::DEVICE_MISSING);
  EXPECT_EQ(results[6].problem.kind, eProblem::DEVICE_UNUSABLE);
}

// Catches: a port taken from the program that has it locked, or given away while a scanner has it.
TEST(SensorSearch, LocksThePort) {
  const cSimSensor sensor(fast());
  const int other = open(sensor.getPath().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_EQ(flock(other, LOCK_EX), 0);
  cScanner scanner(sensor.getPath());
  EXPECT_TRUE(comesTo(scanner, eState::WAITING, eProblem::DEVICE_IN_USE));
  EXPECT_EQ(sensor.getCounters().bytesReceived, 0U);
  flock(other, LOCK_UN);
  take(scanner);
  EXPECT_NE(flock(other, LOCK_EX | LOCK_NB), 0);
  scanner.stop();
  EXPECT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
  close(other);
}

// Catches: a search that goes on after its end was asked for.
TEST(SensorSearch, EndsWhenAsked) {
  const cPtyPair silent;
  cSensorSearch search({silent.getPath()});
  search.requestStop();
  EXPECT_LT(measure([&] { EXPECT_FALSE(search.wait().at(0).sensor); }), 1000);
}
