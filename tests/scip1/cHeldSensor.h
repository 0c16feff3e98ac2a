#pragma once

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "sim/tarvosim.h"
#include "tarvolink/tarvolink.h"

/// A SCIP 1.x sensor in a test's hands: answers can be held back, or be written byte for byte.
/// Left alone it accepts every command; the points of its scan number n, counted from 0, say
/// n / 4096 and n % 4096 by turns. Every wait has a deadline of 20 s.
class cHeldSensor {
 public:
  /// @param speed bits/s of a real line; 0: bytes take no time
  explicit cHeldSensor(int speed = 0);
  /// Lets go of the answer held back, so that its own thread ends.
  ~cHeldSensor();

  const std::string& getPath() const { return sensor->getPath(); }
  std::vector<std::string> getCommands() const { return sensor->getCommands(); }
  void say(const std::string& bytes) { sensor->say(bytes); }
  /// Pulls the cable while scans are asked for, but not within a scan's answer: half of one would
  /// end the process. The scans before it are refused.
  void unplug();

  /// Says `bytes` to commands that begin with `prefix`.
  void script(const std::string& prefix, const std::string& bytes);

  /// Answers commands with that prefix itself again.
  void unscript(const std::string& prefix);

  /// Answers this many commands more, and then none until told again.
  void letGo(int count);
  /// One answer more.
  void addAnswer();

  /// Whether `count` commands that begin with `prefix` are heard, answered or not.
  bool hears(const std::string& prefix, std::size_t count);
  /// Whether this many answers, or `say`, have left.
  bool hasSaid(std::uint64_t count);
  std::size_t countCommands(const std::string& prefix) const;

 private:
  void answer(const std::string& command);
  std::string getAnswer(const std::string& command);
  std::string getScan(const std::string& command);

  std::mutex mutex;  // guards all below but what `sensor` points to
  std::condition_variable changed;
  std::map<std::string, std::string> scripts;
  int answersLeft = -1;  // below 0: no limit
  int scans = 0;
  bool refusesScans = false;
  std::unique_ptr<cSimSensor> sensor;
};

/// A record of SCIP 1.x; `body` is lines with their ends.
std::string record(const std::string& echo, const std::string& status,
                   const std::string& body = "");

/// A held sensor with a driver on it, whose reads wait 10 s unless told otherwise.
struct cRig {
  explicit cRig(int speed = 0);
  /// Lets go of an answer held back, for which the driver may be waiting.
  ~cRig() { sensor.letGo(-1); }

  /// The adapter, made when first asked for.
  iSCIP2IF& scip2();
  /// Takes the oldest scan once there is one, waiting for it; its number, or -1.
  int takeNumber();
  /// Waits until the worker does not scan any more.
  bool waitForIdle();
  /// The numbers of the scans in the list, which is empty afterwards.
  std::vector<int> takeAll();

  cHeldSensor sensor;
  boost::shared_ptr<kavTBX::basic_portbuf<char>> port;
  boost::shared_ptr<cTarvoLink> link;
  std::unique_ptr<cSensorDriverSCIP1> driver;

 private:
  iSCIP2IF* face = nullptr;
};

/// The number of a held sensor's scan.
int numberOf(const cScan& scan);
