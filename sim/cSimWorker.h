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

/// A sensor under power: lives from plug to unplug. Its thread receives, answers and scans; it
/// sleeps until the host writes, until bytes or a turn are due, or until wake() (an eventfd).
class cSimWorker {
 public:
  /// Opens pty and link and starts the thread. Its arguments must outlive it. Throws
  /// std::system_error.
  cSimWorker(const cSimSetting& setting, const cSimModel& model, const cSimWorld& world,
             cSimFaults& faults, cSimLog& log);
  /// Ends the thread, removes the link, closes the pty.
  ~cSimWorker();

  // any thread
  const std::string& getPath() const { return line.getPty().getPath(); }
  int getSpeed() const { return speed; }
  bool isScanning() const { return scanning; }
  void inject(const std::string& bytes);
  /// Makes the thread look again at the faults and at what is to be injected.
  void wake();

 private:
  using cTimePoint = cSimTurn::cTimePoint;

  // worker only
  void run();
  void sleep(cTimePoint now);
  std::optional<cTimePoint> nextWakeUp(cTimePoint now) const;
  void clearWakeUp();
  void queueInjected(cTimePoint now);
  void receive(cTimePoint now);
  void answer(const cSimCommand& command, cTimePoint now);
  cSimClock clockAt(cTimePoint now) const;
  void runTask(cTimePoint now);
  void scanPaced(cTimePoint now);
  void scanUnpaced(cTimePoint now);
  void queueScan(std::uint32_t number, cTimePoint now);
  void queue(cSimRecord record, cTimePoint now);
  void transmit(cTimePoint now);
  void applyNewSpeed(const cSimRecord& record);
  bool isStalled() const { return faults.valueOf(eSimFault::STALL).has_value(); }
  std::uint32_t getTurn(cTimePoint now) const { return setting.paced ? turns.endedAt(now) : turn; }

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
  std::uint32_t turn = 0;      ///< newest turn whose scan was sent in an answer or unpaced
  std::uint32_t nextScan = 0;  ///< the turn whose scan a running task sends next; 0: none runs
  cTimePoint quietUntil;       ///< no unpaced scan before this: a fault swallowed the last one
  bool blocked = false;        ///< the pty has no room

  std::atomic<int> speed;
  std::atomic<bool> scanning{false};
  std::atomic<bool> stopping{false};
  std::mutex mutex;                   ///< guards injected
  std::vector<std::string> injected;  ///< bytes to be queued by the thread
  std::thread thread;
};
