// Requests, tags, answers and listeners of the communication thread, with a scripted sensor.
#include "tarvolink/scip2/cSCIP2Comm.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "tests/scip2/cCommRig.h"
#include "tests/support/driving.h"

namespace {

using tLines = std::vector<std::string>;

bool waitUntilComplete(cSCIP2RecordListener& listener) {
  const auto deadline = std::chrono::steady_clock::now() + cPtyPair::PATIENCE;
  while (!listener.isComplete() && std::chrono::steady_clock::now() < deadline) usleep(200);
  return listener.isComplete();
}

bool isAsleep(pid_t thread) {
  std::ifstream stat("/proc/self/task/" + std::to_string(thread) + "/stat");
  std::string text;
  std::getline(stat, text);
  return text.find(") S ") != std::string::npos;
}

TEST(Comm, tagsEachLineAndReusesACompleteListener) {
  cCommRig rig(answer);
  cSCIP2RecordListener* const listener = rig.comm.sendRequest("BM", 1);
  ASSERT_TRUE(waitUntilComplete(*listener));
  EXPECT_EQ(rig.comm.sendRequest("QT", 1), listener);
  EXPECT_EQ(takeEcho(listener), "BM;1") << "nobody took that one";
  EXPECT_EQ(takeEcho(listener), "QT;2");
  EXPECT_EQ(rig.peer.waitLines(2), (tLines{"BM;1", "QT;2"}));
}

TEST(Comm, pairsUntaggedAnswersByTwoLettersAndDropsTheRest) {
  cCommRig rig([](const std::string& line) {
    return line == "VV;1" ? "" : answer("ZZ") + answer("PPx") + answer("PPy") + answer("VVz");
  });
  cSCIP2RecordListener* const version = rig.comm.sendRequest("VV", 1);
  cSCIP2RecordListener* const parameters = rig.comm.sendRequest("PP", 1);
  EXPECT_EQ(takeEcho(version), "VVz");
  EXPECT_EQ(takeEcho(parameters), "PPx");
  EXPECT_FALSE(parameters->hasRecords());
}

// Would catch a status that cannot be trusted taken for a success, or ending the thread.
TEST(Comm, checksTheStatusAndStripsIt) {
  struct cRow {
    std::string line;
    int error;
    const char* left;
  };
  for (const cRow& row : {cRow{"00P", 0, "00"}, cRow{"0Ee", 0, "0E"}, cRow{"00Q", 0x10, "00"},
                          cRow{"0", 0x10, "0"}, cRow{"", 0x10, ""}, cRow{"00P\r", 0x10, "00P"}}) {
    cCommRig rig([&row](const std::string& line) {
      return line + "\n" + (line == "BM;1" ? row.line : "00P") + "\nbody\n\n";
    });
    const auto record = rig.comm.sendRequest("BM", 1)->waitRecord(PATIENCE);
    ASSERT_TRUE(record) << row.line;
    EXPECT_EQ(record->error, row.error) << row.line;
    EXPECT_EQ(record->status, row.left);
    EXPECT_EQ(record->body, "body\n");
    {
      boost::mutex::scoped_lock guard(rig.link->mutex);
      EXPECT_EQ(rig.link->record.status, row.line) << "the link's stays as received";
    }
    EXPECT_EQ(rig.comm.sendRequest("QT", 1)->waitRecord(PATIENCE)->error, 0);
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
  const std::string nuls(2, '\0');
  for (const cRow& row :
       {cRow{"00P\n", false, true, "00"}, cRow{"00P\n\n", false, false, "00P"},
        cRow{"99b", false, true, "99"}, cRow{"0P", false, false, "0P"},
        cRow{"P\n", false, false, "P"}, cRow{"ABC;" + sum("ABC"), true, true, "ABC"},
        cRow{"ABC" + sum("ABC"), true, true, "ABC"},
        cRow{"ABC;" + sum("ABC;"), false, true, "ABC;"},
        cRow{"ABC;" + sum("ABC;"), true, false, "ABC"}, cRow{"A;C" + sum("A;C"), true, true, "A;C"},
        cRow{high + sum(high), false, true, high}, cRow{"00\xD0", false, false, "00"},
        cRow{nuls + "0", false, true, nuls}}) {
    std::string line = row.line;
    EXPECT_EQ(cSCIP2Comm::validateLine(line, row.hasSemicolon), row.isValid) << row.line;
    EXPECT_EQ(line, row.left);
  }
  for (std::string line : {"", "\n"}) {
    EXPECT_THROW(cSCIP2Comm::validateLine(line, false), std::out_of_range);
  }
}

TEST(Comm, waitsByTagForARequestThatIsUnanswered) {
  cCommRig rig(keepSilent);
  cSCIP2RecordListener* const listener = rig.comm.sendRequest("VV", 1);
  EXPECT_LT(measure([&] { EXPECT_FALSE(rig.comm.waitRecord(2, PATIENCE)); }), PATIENCE);
  EXPECT_GE(measure([&] { EXPECT_FALSE(rig.comm.waitRecord(1, 60)); }), 60);
  EXPECT_FALSE(rig.comm.waitRecord(listener, 0));
  std::thread sensor([&rig, caller = gettid()] {
    EXPECT_TRUE(eventually([caller] { return isAsleep(caller); })) << "in its wait";
    rig.cable.send(answer("VV;1"));
  });
  EXPECT_TRUE(rig.comm.waitRecord(1, PATIENCE));
  sensor.join();
}

// The caller returns after the first line: would catch the second one read from its dead stack.
TEST(Comm, resumesARequestWithTwoLinesAndOneRecordToCome) {
  cCommRig rig(keepSilent);
  cSCIP2RecordListener* const listener = rig.comm.sendRequest("MD", -1);
  EXPECT_EQ(rig.comm.resumeRequest(listener, "MS"), listener);
  EXPECT_EQ(rig.peer.waitLines(3), (tLines{"MD;1", "MS;2", "MS;3"}));
  rig.cable.send(answer("MD;1") + answer("MS;3"));
  EXPECT_EQ(takeEcho(listener), "MS;3");
  EXPECT_TRUE(waitUntilComplete(*listener));
}

// Would catch a scan's listener that serves a "QT" while the scan's records wait in it.
TEST(Comm, givesAKeptListenerToNobodyUntilItIsLetGo) {
  const std::string scan = cScriptedPeer::respond("MD;1", "99", "data\n");
  cCommRig rig([scan](const std::string& line) { return scan + answer(line); });
  cSCIP2RecordListener* const claimed = rig.comm.claimRequest("MD", 3);
  boost::shared_ptr<cSCIP2RecordListener> kept = rig.comm.keep(claimed);
  std::set<cSCIP2RecordListener*> used;
  const auto exchange = [&](int count) {
    while (count-- > 0) {
      cSCIP2RecordListener* const listener = rig.comm.claimRequest("QT", 1);
      EXPECT_EQ(takeEcho(listener).substr(0, 2), "QT");
      rig.comm.release(listener);
      used.insert(listener);
    }
  };
  exchange(4);
  EXPECT_EQ(used.count(claimed), 0u);
  EXPECT_TRUE(waitUntilComplete(*kept));
  kept.reset();
  exchange(4);
  EXPECT_EQ(used.count(claimed), 1u) << "emptied, and in use again";
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

}  // namespace
