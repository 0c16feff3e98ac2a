// Stopping the communication thread in each of its states, and a line that is dead.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <ctime>
#include <memory>
#include <thread>

#include "tests/scip2/cCommRig.h"
#include "tests/support/cCaseName.h"

namespace {

/// Sends `text` again and again, every 2 ms or as fast as it is taken.
class cBabbler {
 public:
  cBabbler(const cPtyPair& cable, const std::string& text, bool isFast)
      : thread([this, &cable, text, isFast] {
          fcntl(cable.getMaster(), F_SETFL, O_NONBLOCK);
          while (!isOver) {
            const ssize_t sent = write(cable.getMaster(), text.data(), text.size());
            if (sent <= 0 || !isFast) usleep(2000);
          }
        }) {}
  ~cBabbler() {
    isOver = true;
    thread.join();
  }

 private:
  std::atomic<bool> isOver{false};
  std::thread thread;
};

struct cState {
  const char* name;
  bool runs;
  int count;  // of a request before the stop; 0 none
  const char* babble = "";
  bool isFast = false;
  bool isHungUp = false;
};

class Stop : public testing::TestWithParam<cState> {};

// Would catch a driver whose destruction hangs its host. Slow babble must be ended between two
// reads: its line or record would take 8 s and more to reach its limit.
TEST_P(Stop, returnsSoon) {
  const cState& state = GetParam();
  cRig rig(keepSilent, 300);
  auto comm = std::make_unique<cSCIP2Comm>(rig.link);
  if (state.runs) comm->run();
  if (state.count != 0) comm->sendRequest("MD", state.count);
  std::unique_ptr<cBabbler> babbler;
  if (state.babble[0] != 0) {
    babbler = std::make_unique<cBabbler>(rig.cable, state.babble, state.isFast);
    ASSERT_FALSE(comm->waitRecord(1, 50)) << "no record, but the thread is in the midst of one";
  }
  if (state.isHungUp) rig.hangUp();
  EXPECT_LT(measure([&comm] { comm.reset(); }), 4000);
}

INSTANTIATE_TEST_SUITE_P(
    Comm, Stop,
    testing::Values(cState{"neverRun", false, 0}, cState{"idle", true, 0},
                    cState{"waitingForAnAnswer", true, 1}, cState{"endless", true, -1},
                    cState{"slowLine", true, -1, "x"}, cState{"slowLines", true, -1, "x\n"},
                    cState{"slowEmptyLines", true, 1, "\n"},
                    cState{"fastLine", true, -1, "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx", true},
                    cState{"fastLines", true, 1, "MD;2\nxxx\nxxxxxxx\nxx\n", true},
                    cState{"deadPort", true, -1, "", false, true}),
    cCaseName());

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

double getProcessorTime() {
  timespec time = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// A pulled cable: would catch a core burnt until the host notices, and requests that wait their
// turn behind the pause.
TEST(DeadPort, costsNoTimeAndHoldsUpNoRequest) {
  cCommRig rig(keepSilent);
  cSCIP2RecordListener* const scan = rig.comm.sendRequest("MD", -1);
  rig.hangUp();
  scan->waitRecord(100);  // for the read under way to end
  const double before = getProcessorTime();
  EXPECT_FALSE(scan->waitRecord(1000));
  EXPECT_LT(getProcessorTime() - before, 10) << "milliseconds of 1000";
  testing::internal::CaptureStderr();
  std::vector<long> taken(30);
  for (long& one : taken) one = measure([&rig] { rig.comm.sendRequest("VV", 1); });
  testing::internal::GetCapturedStderr();
  std::sort(taken.begin(), taken.end());
  EXPECT_LT(taken[15], 50) << "milliseconds: half the pause, most of them";
}

}  // namespace
