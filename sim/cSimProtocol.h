#pragma once

#include <string>

#include "sim/cSimCommandReader.h"
#include "sim/cSimScip1.h"
#include "sim/cSimScip2.h"

/// The sensor's side of the conversation in whichever dialect it speaks at the moment: bytes in,
/// commands out; commands in, records out. Knows no descriptor, clock or thread, so that tests and
/// fuzzers enter by the same door as the pty.
class cSimProtocol {
 public:
  /// As after power-on; with scanningAtStart its task is running already. The setting, model and
  /// world must outlive it.
  cSimProtocol(const cSimSetting& sensorSetting, const cSimModel& sensorModel,
               const cSimWorld& sensorWorld);
  cSimProtocol(const cSimProtocol&) = delete;
  cSimProtocol& operator=(const cSimProtocol&) = delete;

  /// Takes one byte; the command, when this byte ended one.
  std::optional<cSimCommand> hear(char byte) { return reader.hear(byte); }
  /// The answer to a command; with no bytes where nothing is to be said. The same line once more
  /// before `allSaid` is a repetition: 0B in SCIP 2.0.
  cSimRecord answer(const cSimCommand& command, const cSimMoment& moment);
  /// All answers have left.
  void allSaid() { unsaid.clear(); }

  /// The task that is running, or null.
  const cSimTask* getTask() const { return state.task ? &*state.task : nullptr; }
  /// Its next record.
  cSimRecord makeScan(std::uint32_t number, std::uint32_t stamp) {
    return scip2.makeScan(number, stamp);
  }

 private:
  const cSimSetting& setting;
  cSimCommandReader reader;
  cSimState state;
  cSimScip1 scip1;
  cSimScip2 scip2;
  std::string unsaid;  ///< the last line, while its answer has not left
};
