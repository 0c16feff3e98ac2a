#pragma once

#include <string>

#include "sim/cSimCommandReader.h"
#include "sim/cSimScip1.h"
#include "sim/cSimScip2.h"

/// The sensor's side of the conversation, in the dialect that it speaks at the time: bytes in,
/// commands out; commands in, records out. Knows no descriptor, clock or thread, so that a fuzzer
/// enters by the same functions as the pty.
class cSimProtocol {
 public:
  /// As after power-on; with scanningAtStart its task is running already. The arguments must
  /// outlive it.
  cSimProtocol(const cSimSetting& setting, const cSimModel& model, const cSimWorld& world);
  cSimProtocol(const cSimProtocol&) = delete;
  cSimProtocol& operator=(const cSimProtocol&) = delete;

  /// Takes one byte; returns the command if this byte ended one.
  std::optional<cSimCommand> receive(char byte) { return reader.receive(byte); }
  /// The answer to a command; its bytes are empty where the sensor stays silent. The same line
  /// again before `allSent` is a repetition: 0B in SCIP 2.0.
  cSimRecord answer(const cSimCommand& command, const cSimClock& clock);
  /// Tells it that all answers have been sent.
  void allSent() { unsentLine.clear(); }

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
  std::string unsentLine;  ///< the last command, until its answer has been sent
};
