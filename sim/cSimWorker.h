#pragma once

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "sim/cSimDamage.h"
#include "sim/cSimFaults.h"
#include "sim/cSimLine.h"
#include "sim/cSimLink.h"
#include "sim/cSimLog.h"
#include "sim/cSimOutbox.h"
#include "sim/cSimProtocol.h"
#include "sim/cSimTurn.h"

/// A sensor under power: from plug to unplug. Its thread hears, answers and scans; it sleeps until
/// the host writes, bytes or a turn fall due, or somebody wakes it (an eventfd).
class cSimWorker {
 public:
  /// Opens pty and link and runs the thread. What it is given must outlive it. Throws
  /// std::system_error.
  cSimWorker(const cSimSetting& sensorSetting, const cSimModel& sensorModel,
             const cSimWorld& sensorWorld, cSimFaults& sensorFaults, cSimLog& sensorLog);
  /// Ends the thread, removes the link, hangs up.
  ~cSimWorker();

  // any thread
  const std::string& getPath() const { return line.getPty().getPath(); }
  int getSpeed() const { return speed; }
  bool isScanning() const { return scanning; }
  void say(const std::string& bytes);
  /// Lets the thread look again at faults and at what is to be said.
  void wake();

 private:
  using cMoment = cSimTurn::cMoment;

  // the thread's own
  void run();
  void sleep(cMoment now);
  std::optional<cMoment> wakeAt(cMoment now) const;
  void drainWakeUp();
  void takeSaid(cMoment now);
  void hear(cMoment now);
  void answer(const cSimCommand& command, cMoment now);
  cSimMoment momentAt(cMoment now) const;
  void followTask(cMoment now);
  void scanPaced(cMoment now);
  void scanUnpaced(cMoment now);
  void sendScan(std::uint32_t number, cMoment now);
  void send(cSimRecord record, cMoment now);
  void pump(cMoment now);
  void finish(const cSimRecord& record);
  bool isStalled() const { return faults.valueOf(eSimFault::STALL).has_value(); }
  std::uint32_t getTurn(cMoment now) const { return setting.paced ? turns.endedAt(now) : turn; }

  const cSimSetting& setting;
  cSimFaults& faults;
  cSimLog& log;
  cSimLine line;
  cSimLink link;
  cSimDescriptor event;
  cSimProtocol protocol;
  cSimDamage damage;
  cSimOutbox outbox;
  cSimTurn turns;
  std::uint32_t turn = 0;      ///< the turn whose scan an answer took, or went out unpaced
  std::uint32_t nextScan = 0;  ///< the turn whose scan a running task sends next; 0: none runs
  cMoment quietUntil;          ///< no unpaced scan before: the last one was kept back by a fault
  bool blocked = false;        ///< the pty has no room

  std::atomic<int> speed;
  std::atomic<bool> scanning{false};
  std::atomic<bool> stopping{false};
  std::mutex mutex;  ///< guards said
  std::vector<std::string> said;
  std::thread thread;
};
