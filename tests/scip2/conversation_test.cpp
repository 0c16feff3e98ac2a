// Requests, tags, answers and listeners of the communication thread, and how it is stopped.
#include "tests/support/cScriptedSensor.h"

namespace {

/// A communication thread that runs, with a sensor that answers by `rule`.
struct cSession {
  explicit cSession(const cScriptedSensor::tRule& rule, int timeout = 50)
      : sensor(rule), link(openLink(sensor.getPath(), timeout)), comm(link) {
    comm.run();
  }

  cScriptedSensor sensor;
  tLink link;
  cSCIP2Comm comm;
};

/// The echo of the next record, or a word for none.
std::string takeEcho(cSCIP2RecordListener* listener, int timeout = LONG) {
  const boost::shared_ptr<cSCIPRecord> record = listener->waitRecord(timeout);
  return record ? record->echo : "(none)";
}

boost::shared_ptr<cSCIPRecord> makeRecord(const std::string& echo) {
  boost::shared_ptr<cSCIPRecord> record(new cSCIPRecord);
  record->echo = echo;
  return record;
}

// Catches: an answer to another command taken, or its own refused.
TEST(Listener, GoesByTagOrElseByTwoLetters) {
  using tRow = std::tuple<const char*, const char*, bool>;
  for (const auto& [echo, command, isTaken] :
       {tRow{"BM;7", "BM", true}, tRow{"BM;8", "BM", false}, tRow{"QT;7", "BM", true},
        tRow{"BM;host;7", "BM", false}, tRow{"BM;4294967303", "BM", false},
        tRow{"BM;", "BM", false}, tRow{"MD0044072501000", "MD0000", true}, tRow{"MS", "MD", false},
        tRow{"V", "V", true}, tRow{"", "BM", false}}) {
    cSCIP2RecordListener listener;
    listener.resetResponse(command, 7, 1);
    EXPECT_EQ(listener.push(makeRecord(echo)), isTaken) << echo;
    EXPECT_EQ(listener.hasRecords(), isTaken) << echo;
    EXPECT_EQ(listener.isComplete(), isTaken) << echo;
  }
}

// Catches: a wait that ends early, with nothing, for a signal that an earlier record left.
TEST(Listener, WaitsItsWholeTimeForARecord) {
  constexpr int OVER = std::numeric_limits<int>::min();
  cSCIP2RecordListener listener;
  listener.resetResponse("MD", 1, -1);
  listener.push(makeRecord("MD0;1"));
  listener.push(makeRecord("MD1;1"));
  listener.resetResponse("QT", 2, 1);
  EXPECT_EQ(takeEcho(&listener, 0), "MD0;1") << "a reset keeps what is untaken";
  EXPECT_EQ(takeEcho(&listener, OVER), "MD1;1");
  EXPECT_GE(measure([&] { EXPECT_FALSE(listener.waitRecord(60)); }), 60);
}

// The caller returns after the first line.
// Catches: the second one read from its dead stack, a wait by tag for what nobody asked.
TEST(Comm, ResumesARequestWithTwoLinesAndOneRecordToCome) {
  cSession session(keepSilent);
  cSCIP2RecordListener* const listener = session.comm.sendRequest("MD", -1);
  session.sensor.inject(answer("MD;1"));
  EXPECT_TRUE(session.comm.waitRecord(1, LONG));
  EXPECT_LT(measure([&] { EXPECT_FALSE(session.comm.waitRecord(2, LONG)); }), LONG);
  EXPECT_EQ(session.comm.resumeRequest(listener, "MS"), listener);
  EXPECT_EQ(session.sensor.waitLines(3), (tLines{"MD;1", "MS;2", "MS;3"}));
  session.sensor.inject(answer("MD;1") + answer("MS;3"));
  EXPECT_EQ(takeEcho(listener), "MS;3");
  EXPECT_TRUE(eventually([&] { return listener->isComplete(); }));
}

// Slow babble must be ended between two reads: its line or record would take 8 s and more to reach
// its limit.
// Catches: a driver whose destruction hangs its host.
TEST(Stop, ReturnsSoon) {
  using tRow = std::tuple<int, const char*, bool>;
  for (const auto& [count, babble, isSlow] :  // of a request before the stop; 2 ms between bytes
       {tRow{1, "", false}, tRow{-1, "", false}, tRow{-1, "x", true}, tRow{-1, "x\n", true},
        tRow{1, "\n", true}, tRow{1, "MD;2\nxxx\nxxxxxxx\nxx\n", false}}) {
    cScriptedSensor sensor(keepSilent);
    if (isSlow) sensor.setFault(eSimFault::BYTE_BY_BYTE, 2000);
    auto comm = std::make_unique<cSCIP2Comm>(openLink(sensor.getPath()));
    comm->run();
    comm->sendRequest("MD", count);
    std::string text;
    while (babble[0] != 0 && text.size() < 1000000) text += babble;
    sensor.inject(text);
    ASSERT_FALSE(comm->waitRecord(1, 50)) << "no record, but the thread may be in the midst of one";
    EXPECT_LT(measure([&] { comm.reset(); }), 4000) << babble;
  }
}

// Catches: a caller that hangs for ever because the thread went before its request came up, or was
// never there.
TEST(Stop, ReleasesAllCallers) {
  for (int round = 0; round < 25; ++round) {
    cSession session(keepSilent, 5);
    cSCIP2RecordListener* const scan = session.comm.sendRequest("MD", -1);
    boost::thread_group callers;
    for (int i = 0; i < 3; ++i) {
      callers.create_thread([&] {
        while (session.comm.sendRequest("VV", 1) != nullptr) {
        }
      });
      callers.create_thread([&] { session.comm.resumeRequest(scan, "MD"); });
    }
    session.comm.finalize();
    callers.join_all();
    EXPECT_EQ(session.comm.claimRequest("VV", 1), nullptr);
    cSCIP2Comm unstarted(session.link);
    boost::thread early([&] { unstarted.sendRequest("VV", 1); });
    unstarted.finalize();
    unstarted.run();
    EXPECT_EQ(unstarted.sendRequest("VV", 1), nullptr);
    early.join();
  }
}

}  // namespace
