// Requests, tags, answers and listeners of the communication thread, and how it is stopped.
#include <gtest/gtest.h>

#include <memory>
#include <set>

#include "tarvolink/scip2/cSCIP2Comm.h"
#include "tests/scip/cRig.h"
#include "tests/support/driving.h"

namespace {

using tLines = std::vector<std::string>;

/// A communication thread that runs, with a sensor that answers by `rule`.
struct cCommRig : cRig {
  explicit cCommRig(cScriptedPeer::tRule rule, int timeout = 50)
      : cRig(std::move(rule), timeout), comm(link) {
    comm.run();
  }

  cSCIP2Comm comm;
};

/// The echo of the next record, or a word for none.
std::string takeEcho(cSCIP2RecordListener* listener, int timeout = PATIENCE) {
  const boost::shared_ptr<cSCIPRecord> record = listener->waitRecord(timeout);
  return record ? record->echo : "(none)";
}

boost::shared_ptr<cSCIPRecord> makeRecord(const std::string& echo) {
  boost::shared_ptr<cSCIPRecord> record(new cSCIPRecord);
  record->echo = echo;
  return record;
}

// Would catch an answer to another command taken, or its own refused.
TEST(Listener, goesByTagOrElseByTwoLetters) {
  using tRow = std::tuple<const char*, const char*, bool>;
  for (const auto& [echo, command, isTaken] :
       {tRow{"BM;7", "BM", true}, tRow{"BM;8", "BM", false}, tRow{"QT;7", "BM", true},
        tRow{"BM;host;7", "BM", false}, tRow{"BM;4294967303", "BM", false},
        tRow{"BM;", "BM", false}, tRow{"MD0044072501000", "MD0000", true}, tRow{"QT", "BM", false},
        tRow{"V", "V", true}, tRow{"", "BM", false}}) {
    cSCIP2RecordListener listener;
    listener.resetResponse(command, 7, 1);
    EXPECT_EQ(listener.push(makeRecord(echo)), isTaken) << echo;
    EXPECT_EQ(listener.hasRecords(), isTaken) << echo;
    EXPECT_EQ(listener.isComplete(), isTaken) << echo;
  }
}

// Would catch a wait that ends early, with nothing, for a signal that an earlier record left.
TEST(Listener, waitsItsWholeTimeForARecord) {
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

// The signal is binary, and a reuse of the listener clears it: would catch a waiter that sleeps
// on beside its record.
TEST(Listener, wakesAWaiterForEachRecordThoughItIsReusedMeanwhile) {
  for (int round = 0; round < 20; ++round) {
    cSCIP2RecordListener listener;
    listener.resetResponse("MD", 1, -1);
    std::thread waiters[2];
    for (auto& waiter : waiters) {
      waiter = std::thread([&] { EXPECT_TRUE(listener.waitRecord(PATIENCE)); });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));  // for the fault to show
    const long elapsed = measure([&] {
      listener.push(makeRecord("MD;1"));
      listener.push(makeRecord("MD;1"));
      if (round % 2 == 0) listener.resetResponse("PP", 2, 1);
      for (auto& waiter : waiters) waiter.join();
    });
    ASSERT_LT(elapsed, PATIENCE);
  }
}

// Would catch a status that cannot be trusted taken for a success, or ending the thread.
TEST(Comm, checksTheStatusAndStripsIt) {
  using tRow = std::tuple<std::string, int, const char*>;
  for (const auto& [status, error, left] :
       {tRow{"00P", 0, "00"}, tRow{"0Ee", 0, "0E"}, tRow{"00Q", 0x10, "00"}, tRow{"0", 0x10, "0"},
        tRow{"", 0x10, ""}, tRow{"00P\r", 0x10, "00P"}}) {
    cCommRig rig(
        [said = status](const std::string& line) { return line + "\n" + said + "\nbody\n\n"; });
    for (const char* command : {"BM", "QT"}) {
      const auto record = rig.comm.sendRequest(command, 1)->waitRecord(PATIENCE);
      ASSERT_TRUE(record) << status;
      EXPECT_EQ(record->error, error) << status;
      EXPECT_EQ(record->status, left);
      EXPECT_EQ(record->body, "body\n");
    }
  }
}

// Would catch a sum taken over the wrong part of a line, or that is not stripped.
TEST(Comm, validatesLinesAndStripsTheSum) {
  struct cRow {
    std::string line;
    bool hasSemicolon, isValid;
    std::string left;
  };
  const auto sum = [](const std::string& text) { return std::string(1, cScriptedPeer::sum(text)); };
  const std::string high = "\x80\xFF\xE9";
  for (const cRow& row :
       {cRow{"00P\n", false, true, "00"}, cRow{"00P\n\n", false, false, "00P"},
        cRow{"0P", false, false, "0P"}, cRow{"ABC;" + sum("ABC"), true, true, "ABC"},
        cRow{"ABC" + sum("ABC"), true, true, "ABC"},
        cRow{"ABC;" + sum("ABC;"), false, true, "ABC;"},
        cRow{"ABC;" + sum("ABC;"), true, false, "ABC"},
        cRow{high + sum(high), false, true, high}}) {
    std::string line = row.line;
    EXPECT_EQ(cSCIP2Comm::validateLine(line, row.hasSemicolon), row.isValid) << row.line;
    EXPECT_EQ(line, row.left);
  }
  std::string empty = "\n";
  EXPECT_THROW(cSCIP2Comm::validateLine(empty, false), std::out_of_range);
}

// The caller returns after the first line: would catch the second one read from its dead stack, and
// a wait by tag for what nobody asked.
TEST(Comm, resumesARequestWithTwoLinesAndOneRecordToCome) {
  cCommRig rig(keepSilent);
  cSCIP2RecordListener* const listener = rig.comm.sendRequest("MD", -1);
  rig.cable.send(answer("MD;1"));
  EXPECT_TRUE(rig.comm.waitRecord(1, PATIENCE));
  EXPECT_LT(measure([&] { EXPECT_FALSE(rig.comm.waitRecord(2, PATIENCE)); }), PATIENCE);
  EXPECT_EQ(rig.comm.resumeRequest(listener, "MS"), listener);
  EXPECT_EQ(rig.peer.waitLines(3), (tLines{"MD;1", "MS;2", "MS;3"}));
  rig.cable.send(answer("MD;1") + answer("MS;3"));
  EXPECT_EQ(takeEcho(listener), "MS;3");
  EXPECT_TRUE(eventually([&] { return listener->isComplete(); }));
}

// Would catch a scan's listener that serves a "QT" while the scan's records wait in it.
TEST(Comm, givesAKeptListenerToNobodyUntilItIsLetGo) {
  const std::string scan = cScriptedPeer::respond("MD;1", "99", "data\n");
  cCommRig rig([scan](const std::string& line) { return scan + answer(line); });
  cSCIP2RecordListener* const claimed = rig.comm.claimRequest("MD", 3);
  boost::shared_ptr<cSCIP2RecordListener> kept = rig.comm.keep(claimed);
  const auto isUsed = [&](int exchanges) {
    bool isOneOfThem = false;
    while (exchanges-- > 0) {
      cSCIP2RecordListener* const listener = rig.comm.claimRequest("QT", 1);
      EXPECT_EQ(takeEcho(listener).substr(0, 2), "QT");
      rig.comm.release(listener);
      isOneOfThem |= listener == claimed;
    }
    return isOneOfThem;
  };
  EXPECT_FALSE(isUsed(4));
  EXPECT_TRUE(eventually([&] { return kept->isComplete(); }));
  kept.reset();
  EXPECT_TRUE(isUsed(4)) << "emptied, and in use again";
}

// A sensor gone mute for a year: would catch a listener, and a search through all of them, more
// with every command.
TEST(Comm, boundsTheRequestsThatNobodyWaitsFor) {
  cCommRig rig(keepSilent, 1);
  std::set<cSCIP2RecordListener*> used;
  for (int i = 0; i < 300; ++i) {
    cSCIP2RecordListener* const listener = rig.comm.claimRequest("VV", 1);
    used.insert(listener);
    rig.comm.release(listener);
  }
  EXPECT_LT(used.size(), 260u);
}

// Would catch two readers on the line: the thread must be asleep, and what it waited for forgotten.
TEST(Comm, readsNothingOnceItGaveUp) {
  cCommRig rig(keepSilent);
  rig.comm.sendRequest("VV", 1);
  rig.comm.sendRequest("MD", -1);
  rig.comm.giveUp();
  rig.port->readTimeout = PATIENCE;
  for (int i = 0; i < 20; ++i) {
    rig.cable.send(answer("V" + std::to_string(i)));
    ASSERT_TRUE(rig.link->recvRecord());
    EXPECT_EQ(rig.link->record.echo, "V" + std::to_string(i));
  }
}

// Would catch a driver whose destruction hangs its host. Slow babble must be ended between two
// reads: its line or record would take 8 s and more to reach its limit.
TEST(Stop, returnsSoon) {
  struct cRow {
    int count;           // of a request before the stop
    const char* babble;  // said again and again
    bool isSlow;         // 2 ms between two bytes
  };
  for (const auto& [count, babble, isSlow] :
       {cRow{1, "", false}, cRow{-1, "", false}, cRow{-1, "x", true}, cRow{-1, "x\n", true},
        cRow{1, "\n", true}, cRow{1, "MD;2\nxxx\nxxxxxxx\nxx\n", false}}) {
    cSimSensor sensor{cSimSetting()};
    sensor.setFault(eSimFault::NO_ANSWER);
    if (isSlow) sensor.setFault(eSimFault::BYTE_BY_BYTE, 2000);
    auto comm = std::make_unique<cSCIP2Comm>(openLink(sensor.getPath()));
    comm->run();
    comm->sendRequest("MD", count);
    std::string said;
    while (babble[0] != 0 && said.size() < 1000000) said += babble;
    sensor.say(said);
    ASSERT_FALSE(comm->waitRecord(1, 50)) << "no record, but the thread may be in the midst of one";
    EXPECT_LT(measure([&comm] { comm.reset(); }), 4000) << babble;
  }
}

// Would catch a caller that hangs for ever because the thread went before its request came up, or
// was never there.
TEST(Stop, letsAllCallersComeBack) {
  for (int round = 0; round < 25; ++round) {
    cCommRig rig(keepSilent, 5);
    cSCIP2RecordListener* const scan = rig.comm.sendRequest("MD", -1);
    boost::thread_group callers;
    for (int i = 0; i < 3; ++i) {
      callers.create_thread([&] {
        while (rig.comm.sendRequest("VV", 1) != nullptr) {
        }
      });
      callers.create_thread([&] { rig.comm.resumeRequest(scan, "MD"); });
    }
    rig.comm.finalize();
    callers.join_all();
    EXPECT_EQ(rig.comm.claimRequest("VV", 1), nullptr);
    cSCIP2Comm unstarted(rig.link);
    boost::thread early([&] { unstarted.sendRequest("VV", 1); });
    unstarted.finalize();
    unstarted.run();
    EXPECT_EQ(unstarted.sendRequest("VV", 1), nullptr);
    early.join();
  }
}

// Would catch an exception ending the host, and requests left waiting behind it.
TEST(Stop, isAlsoOfAThreadThatAnExceptionEnds) {
  cCommRig rig(answer);
  rig.link->stream->exceptions(std::ios::badbit);
  rig.hangUp();
  testing::internal::CaptureStderr();
  EXPECT_EQ(rig.comm.sendRequest("VV", 1), nullptr);
  EXPECT_EQ(rig.comm.sendRequest("VV", 1), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "basic_portbuf::write: Input/output error\n");
}

}  // namespace
