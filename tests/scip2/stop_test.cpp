// Stopping the communication thread in each of its states, and a line that is dead.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "tests/scip2/cCommRig.h"
#include "tests/support/driving.h"

namespace {

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
        cRow{1, "\n", true}, cRow{-1, "x", false}, cRow{1, "MD;2\nxxx\nxxxxxxx\nxx\n", false}}) {
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

// Would catch a caller that hangs for ever because the thread went before its request came up.
TEST(StopCallers, allComeBack) {
  for (int round = 0; round < 25; ++round) {
    cCommRig rig(keepSilent, 5);
    cSCIP2RecordListener* const scan = rig.comm.sendRequest("MD", -1);
    std::vector<std::thread> callers;
    for (int i = 0; i < 3; ++i) {
      callers.emplace_back([&] {
        while (rig.comm.sendRequest("VV", 1) != nullptr) {
        }
      });
      callers.emplace_back([&] { rig.comm.resumeRequest(scan, "MD"); });
    }
    rig.comm.finalize();
    for (auto& caller : callers) caller.join();
    EXPECT_EQ(rig.comm.sendRequest("VV", 1), nullptr);
    EXPECT_EQ(rig.comm.claimRequest("VV", 1), nullptr);
    EXPECT_EQ(rig.comm.resumeRequest(scan, "VV"), scan);
  }
}

// Would catch an exception ending the host, and requests left waiting behind it.
TEST(StopCallers, comeBackWhenTheThreadEndsByAnException) {
  cCommRig rig(answer);
  rig.link->stream->exceptions(std::ios::badbit);
  rig.hangUp();
  testing::internal::CaptureStderr();
  EXPECT_EQ(rig.comm.sendRequest("VV", 1), nullptr);
  EXPECT_EQ(rig.comm.sendRequest("VV", 1), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "basic_portbuf::write: Input/output error\n");
}

/// Shows the hook that a subclass may call.
struct cOpenComm : cSCIP2Comm {
  using cSCIP2Comm::cSCIP2Comm;
  using cSCIP2Comm::threadFinReq;
};

// Would catch a thread that is started after its end was asked for, and sleeps for ever.
TEST(StopRequest, endsTheThreadByItselfAlsoBeforeItsStart) {
  cRig rig(answer);
  cOpenComm running(rig.link);
  running.run();
  EXPECT_TRUE(running.sendRequest("VV", 1)->waitRecord(PATIENCE));
  cOpenComm unstarted(rig.link);
  for (cOpenComm* const comm : {&running, &unstarted}) {
    std::thread early([comm] { comm->sendRequest("VV", 1); });
    comm->threadFinReq();
    comm->run();
    EXPECT_EQ(comm->sendRequest("VV", 1), nullptr);
    comm->threadFinReq();
    early.join();
  }
}

// A pulled cable: would catch requests that wait their turn behind the pause.
TEST(DeadPort, holdsUpNoRequest) {
  cCommRig rig(keepSilent);
  cSCIP2RecordListener* const scan = rig.comm.sendRequest("MD", -1);
  rig.hangUp();
  scan->waitRecord(100);  // for the read under way to end
  testing::internal::CaptureStderr();
  std::vector<long> taken(30);
  for (long& one : taken) one = measure([&rig] { rig.comm.sendRequest("VV", 1); });
  testing::internal::GetCapturedStderr();
  std::sort(taken.begin(), taken.end());
  EXPECT_LT(taken[15], 50) << "milliseconds: half the pause, most of them";
}

}  // namespace
