// Requests, tags, answers and listeners of the communication thread, with a scripted sensor.
#include "tarvolink/scip2/cSCIP2Comm.h"

#include <gtest/gtest.h>

#include <boost/thread/thread.hpp>
#include <set>

#include "tests/scip2/cRig.h"
#include "tests/support/cCaseName.h"

namespace {

using tLines = std::vector<std::string>;

std::string answer(const std::string& line) { return cScriptedPeer::respond(line); }

std::string keepSilent(const std::string&) { return ""; }

bool waitUntilComplete(cSCIP2RecordListener& listener) {
  const auto deadline = std::chrono::steady_clock::now() + cPtyPair::PATIENCE;
  while (!listener.isComplete() && std::chrono::steady_clock::now() < deadline) usleep(200);
  return listener.isComplete();
}

TEST(Comm, tagsEachLineAndReusesACompleteListener) {
  cRig rig(answer);
  cSCIP2Comm comm(rig.link);
  comm.run();
  cSCIP2RecordListener* const first = comm.sendRequest("BM", 1);
  ASSERT_TRUE(waitUntilComplete(*first));
  cSCIP2RecordListener* const second = comm.sendRequest("QT", 1);
  EXPECT_EQ(second, first);
  EXPECT_EQ(echoOf(comm.waitRecord(second, PATIENCE)), "BM;1") << "nobody took that one";
  EXPECT_EQ(echoOf(comm.waitRecord(second, PATIENCE)), "QT;2");
  EXPECT_EQ(rig.peer.waitLines(2), (tLines{"BM;1", "QT;2"}));
}

TEST(Comm, pairsAnswersByTagInAnyOrder) {
  cRig rig([](const std::string& line) {
    return line == "VV;1" ? "" : answer("ZZ;9") + answer(line) + answer("VV;1");
  });
  cSCIP2Comm comm(rig.link);
  comm.run();
  cSCIP2RecordListener* const version = comm.sendRequest("VV", 1);
  cSCIP2RecordListener* const parameters = comm.sendRequest("PP", 1);
  EXPECT_NE(version, parameters);
  EXPECT_EQ(echoOf(version->waitRecord(PATIENCE)), "VV;1");
  EXPECT_EQ(echoOf(parameters->waitRecord(PATIENCE)), "PP;2");
}

TEST(Comm, pairsUntaggedAnswersByTwoLettersAndDropsTheRest) {
  cRig rig([](const std::string& line) {
    return line == "VV;1" ? "" : answer("ZZ") + answer("PPx") + answer("PPy") + answer("VVz");
  });
  cSCIP2Comm comm(rig.link);
  comm.run();
  cSCIP2RecordListener* const version = comm.sendRequest("VV", 1);
  cSCIP2RecordListener* const parameters = comm.sendRequest("PP", 1);
  EXPECT_EQ(echoOf(version->waitRecord(PATIENCE)), "VVz");
  EXPECT_EQ(echoOf(parameters->waitRecord(PATIENCE)), "PPx");
  EXPECT_FALSE(parameters->hasRecords());
}

// Records of an endless scan stand between the answers to everything else.
TEST(Comm, servesRequestsWhileAnEndlessOneGoesOn) {
  const std::string scan = cScriptedPeer::respond("MD;1", "99", "data\n");
  cRig rig([scan](const std::string& line) { return answer(line) + scan + scan; });
  cSCIP2Comm comm(rig.link);
  comm.run();
  cSCIP2RecordListener* const stream = comm.sendRequest("MD", -1);
  for (int i = 2; i < 20; ++i) {
    cSCIP2RecordListener* const single = comm.sendRequest("VV", 1);
    ASSERT_NE(single, stream);
    EXPECT_EQ(echoOf(single->waitRecord(PATIENCE)), "VV;" + std::to_string(i));
  }
  EXPECT_EQ(stream->waitRecord(PATIENCE)->status, "00");
  for (int i = 0; i < 38; ++i) ASSERT_EQ(stream->waitRecord(PATIENCE)->body, "data\n");
  EXPECT_FALSE(stream->isComplete());
}

struct cStatus {
  const char* name;
  const char* line;
  int error;
  const char* left;
};

class CommStatus : public testing::TestWithParam<cStatus> {};

// Would catch a status that cannot be trusted taken for a success, or ending the thread.
TEST_P(CommStatus, isCheckedAndStripped) {
  cRig rig([](const std::string& line) {
    return line + "\n" + (line == "BM;1" ? GetParam().line : "00P") + "\nbody\n\n";
  });
  cSCIP2Comm comm(rig.link);
  comm.run();
  const boost::shared_ptr<cSCIPRecord> record = comm.sendRequest("BM", 1)->waitRecord(PATIENCE);
  ASSERT_TRUE(record);
  EXPECT_EQ(record->error, GetParam().error);
  EXPECT_EQ(record->status, GetParam().left);
  EXPECT_EQ(record->body, "body\n");
  {
    boost::mutex::scoped_lock guard(rig.link->mutex);
    EXPECT_EQ(rig.link->record.body, "body\n");
    EXPECT_EQ(rig.link->record.status, GetParam().line) << "the link's stays as received";
  }
  EXPECT_EQ(comm.sendRequest("QT", 1)->waitRecord(PATIENCE)->error, 0);
}

INSTANTIATE_TEST_SUITE_P(Comm, CommStatus,
                         testing::Values(cStatus{"good", "00P", 0, "00"},
                                         cStatus{"refusal", "0Ee", 0, "0E"},
                                         cStatus{"refusalBadSum", "0Ea", 0x10, "0E"},
                                         cStatus{"badSum", "00Q", 0x10, "00"},
                                         cStatus{"oneCharacter", "0", 0x10, "0"},
                                         cStatus{"empty", "", 0x10, ""},
                                         cStatus{"carriageReturn", "00P\r", 0x10, "00P"}),
                         cCaseName());

TEST(Comm, waitsByTagForARequestThatIsUnanswered) {
  cRig rig(keepSilent);
  cSCIP2Comm comm(rig.link);
  comm.run();
  comm.sendRequest("VV", 1);
  EXPECT_LT(measure([&] { EXPECT_FALSE(comm.waitRecord(2, PATIENCE)); }), PATIENCE);
  EXPECT_GE(measure([&] { EXPECT_FALSE(comm.waitRecord(1, 60)); }), 60);
  std::thread sensor([&rig] {
    usleep(20000);
    rig.cable.send(answer("VV;1"));
  });
  EXPECT_EQ(echoOf(comm.waitRecord(1, PATIENCE)), "VV;1");
  sensor.join();
}

// The caller returns after the first line: would catch the second one read from its dead stack.
TEST(Comm, resumesARequestWithTwoLinesAndOneRecordToCome) {
  cRig rig(keepSilent);
  cSCIP2Comm comm(rig.link);
  comm.run();
  cSCIP2RecordListener* const listener = comm.sendRequest("MD", -1);
  EXPECT_EQ(comm.resumeRequest(listener, "MS"), listener);
  EXPECT_EQ(rig.peer.waitLines(3), (tLines{"MD;1", "MS;2", "MS;3"}));
  rig.cable.send(answer("MD;1") + answer("MS;3"));
  EXPECT_EQ(echoOf(listener->waitRecord(PATIENCE)), "MS;3");
  EXPECT_TRUE(waitUntilComplete(*listener));
}

// Would catch a scan's listener that serves a "QT" while the scan's records wait in it.
TEST(Comm, givesAKeptListenerToNobodyUntilItIsLetGo) {
  const std::string scan = cScriptedPeer::respond("MD;1", "99", "data\n");
  cRig rig([scan](const std::string& line) { return scan + answer(line); });
  cSCIP2Comm comm(rig.link);
  comm.run();
  cSCIP2RecordListener* const claimed = comm.claimRequest("MD", 3);
  boost::shared_ptr<cSCIP2RecordListener> kept = comm.keep(claimed);
  const auto exchange = [&comm] {
    cSCIP2RecordListener* const listener = comm.claimRequest("QT", 1);
    EXPECT_EQ(echoOf(listener->waitRecord(PATIENCE)).substr(0, 2), "QT");
    comm.release(listener);
    return listener;
  };
  for (int i = 0; i < 4; ++i) EXPECT_NE(exchange(), claimed);
  EXPECT_TRUE(waitUntilComplete(*kept));
  kept.reset();
  std::set<cSCIP2RecordListener*> used;
  for (int i = 0; i < 4; ++i) used.insert(exchange());
  EXPECT_EQ(used.count(claimed), 1u) << "emptied, and in use again";
}

// A sensor gone mute for a year: would catch a listener, and a search through all of them, more
// with every command.
TEST(Comm, boundsTheRequestsThatNobodyWaitsFor) {
  cRig rig(keepSilent, 1);
  cSCIP2Comm comm(rig.link);
  comm.run();
  std::set<cSCIP2RecordListener*> used;
  for (int i = 0; i < 300; ++i) {
    cSCIP2RecordListener* const listener = comm.claimRequest("VV", 1);
    used.insert(listener);
    comm.release(listener);
  }
  EXPECT_LT(used.size(), 260u);
}

// Would catch two readers on the line: the thread must be asleep, and what it waited for forgotten.
TEST(Comm, readsNothingOnceItGaveUp) {
  cRig rig(keepSilent);
  cSCIP2Comm comm(rig.link);
  comm.run();
  comm.sendRequest("VV", 1);
  comm.sendRequest("MD", -1);
  comm.giveUp();
  rig.port->readTimeout = PATIENCE;
  for (int i = 0; i < 20; ++i) {
    rig.cable.send(answer("V" + std::to_string(i)));
    ASSERT_TRUE(rig.link->recvRecord());
    EXPECT_EQ(rig.link->record.echo, "V" + std::to_string(i));
  }
}

TEST(Comm, isNotLeftByAnInterruptedThread) {
  cRig rig(answer);
  cSCIP2Comm comm(rig.link);
  comm.run();
  kavTBX::cBSync start;
  std::string echo;
  boost::thread host([&] {
    start.wait();
    echo = echoOf(comm.sendRequest("VV", 1)->waitRecord(PATIENCE));
  });
  host.interrupt();
  start.unblock();
  host.join();
  EXPECT_EQ(echo, "VV;1");
}

}  // namespace
