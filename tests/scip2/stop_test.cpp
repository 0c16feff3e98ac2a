// Stopping the communication thread in each of its states, and a line that is dead.
#include <gtest/gtest.h>

#include <atomic>
#include <ctime>
#include <memory>
#include <thread>

#include "tarvolink/scip2/cSCIP2Comm.h"
#include "tests/scip2/cRig.h"
#include "tests/support/cCaseName.h"

namespace {

std::string answer(const std::string& line) { return cScriptedPeer::respond(line); }

std::string keepSilent(const std::string&) { return ""; }

/// Sends `text` again and again, every 2 ms or as fast as it is taken.
class cBabbler {
 public:
  cBabbler(const cPtyPair& givenCable, std::string givenText, bool isFast)
      : cable(givenCable), text(std::move(givenText)), pause(isFast ? 0 : 2000) {
    fcntl(cable.getMaster(), F_SETFL, O_NONBLOCK);
    thread = std::thread([this] { babble(); });
  }
  ~cBabbler() {
    isOver = true;
    thread.join();
  }
  cBabbler(const cBabbler&) = delete;
  cBabbler& operator=(const cBabbler&) = delete;

 private:
  void babble() {
    while (!isOver) {
      const ssize_t sent = write(cable.getMaster(), text.data(), text.size());
      if (sent <= 0 || pause > 0) usleep(2000);
    }
  }

  const cPtyPair& cable;
  const std::string text;
  const useconds_t pause;
  std::atomic<bool> isOver{false};
  std::thread thread;
};

struct cState {
  const char* name;
  bool runs;
  int count;  // of a request before the stop; 0 none
  const char* babble;
  bool isFast;
  bool isHungUp;
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
  if (state.isHungUp) {
    rig.peer.end();
    rig.cable.hangUp();
  }
  EXPECT_LT(measure([&comm] { comm.reset(); }), 4000);
}

INSTANTIATE_TEST_SUITE_P(
    Comm, Stop,
    testing::Values(cState{"neverRun", false, 0, "", false, false},
                    cState{"idle", true, 0, "", false, false},
                    cState{"waitingForAnAnswer", true, 1, "", false, false},
                    cState{"endless", true, -1, "", false, false},
                    cState{"slowLine", true, -1, "x", false, false},
                    cState{"slowLines", true, -1, "x\n", false, false},
                    cState{"slowEmptyLines", true, 1, "\n", false, false},
                    cState{"fastLine", true, -1, "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx", true, false},
                    cState{"fastLines", true, 1, "MD;2\nxxx\nxxxxxxx\nxx\n", true, false},
                    cState{"deadPort", true, -1, "", false, true}),
    cCaseName());

// Would catch a caller that hangs for ever because the thread went before its request came up.
TEST(StopCallers, allComeBack) {
  for (int round = 0; round < 25; ++round) {
    cRig rig(keepSilent, 5);
    cSCIP2Comm comm(rig.link);
    comm.run();
    cSCIP2RecordListener* const scan = comm.sendRequest("MD", -1);
    std::vector<std::thread> callers;
    for (int i = 0; i < 3; ++i) {
      callers.emplace_back([&] {
        while (comm.sendRequest("VV", 1) != nullptr) {
        }
      });
      callers.emplace_back([&] { comm.resumeRequest(scan, "MD"); });
    }
    comm.finalize();
    for (auto& caller : callers) caller.join();
    EXPECT_EQ(comm.sendRequest("VV", 1), nullptr);
    EXPECT_EQ(comm.claimRequest("VV", 1), nullptr);
    EXPECT_EQ(comm.resumeRequest(scan, "VV"), scan);
  }
}

// Would catch an exception ending the host, and requests left waiting behind it.
TEST(StopCallers, comeBackWhenTheThreadEndsByAnException) {
  cRig rig(answer);
  rig.link->stream->exceptions(std::ios::badbit);
  cSCIP2Comm comm(rig.link);
  comm.run();
  rig.peer.end();
  rig.cable.hangUp();
  testing::internal::CaptureStderr();
  EXPECT_EQ(comm.sendRequest("VV", 1), nullptr);
  EXPECT_EQ(comm.sendRequest("VV", 1), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "basic_portbuf::write: Input/output error\n");
}

/// Shows the hook that a subclass may call.
class cOpenComm : public cSCIP2Comm {
 public:
  using cSCIP2Comm::cSCIP2Comm;
  using cSCIP2Comm::threadFinReq;
};

// Would catch a thread that is started after its end was asked for, and sleeps for ever.
TEST(StopRequest, mayComeBeforeTheStart) {
  cRig rig(answer);
  cOpenComm comm(rig.link);
  std::thread early([&comm] { EXPECT_EQ(comm.sendRequest("VV", 1), nullptr); });
  comm.threadFinReq();
  comm.run();
  EXPECT_EQ(comm.sendRequest("VV", 1), nullptr);
  early.join();
}

TEST(StopRequest, endsTheThreadByItself) {
  cRig rig(answer);
  cOpenComm comm(rig.link);
  comm.run();
  EXPECT_TRUE(comm.sendRequest("VV", 1)->waitRecord(PATIENCE));
  comm.threadFinReq();
  EXPECT_EQ(comm.sendRequest("VV", 1), nullptr);
  comm.threadFinReq();
}

double getProcessorTime() {
  timespec time = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// A pulled cable: would catch a core burnt until the host notices, and requests that wait their
// turn behind the pause.
TEST(DeadPort, costsNoTimeAndHoldsUpNoRequest) {
  cRig rig(keepSilent);
  cSCIP2Comm comm(rig.link);
  comm.run();
  cSCIP2RecordListener* const scan = comm.sendRequest("MD", -1);
  rig.peer.end();
  rig.cable.hangUp();
  scan->waitRecord(100);  // for the read under way to end
  const double before = getProcessorTime();
  EXPECT_FALSE(scan->waitRecord(1000));
  EXPECT_LT(getProcessorTime() - before, 10) << "milliseconds of 1000";
  testing::internal::CaptureStderr();
  EXPECT_LT(measure([&comm] {
              for (int i = 0; i < 30; ++i) comm.sendRequest("VV", 1);
            }),
            1500);
  testing::internal::GetCapturedStderr();
}

}  // namespace
