#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "tarvolink/tarvolink.h"
#include "tarvoscan/port/cScanPort.h"

namespace tarvo {

/// How an exchange with a sensor ended.
enum class eAnswer {
  GOOD,
  REFUSED,  ///< answered, with a status that is no success
  DAMAGED,  ///< something arrived, and no whole answer to the command
  SILENCE,  ///< nothing arrived in time
  STOPPED,  ///< the end was asked for
  GONE      ///< the device hung up
};

/// A sensor's answer. A plain value.
struct cAnswer {
  eAnswer kind = eAnswer::SILENCE;
  std::string status;  ///< without its sum
  std::string body;    ///< its lines, each with a line feed

  explicit operator bool() const { return kind == eAnswer::GOOD; }
};

/// "refused with status 10", "gave no answer" and so on: what became of a command.
std::string toText(const cAnswer& answer);

/// Commands to a sensor and its answers, one after the other, in either dialect. One thread.
///
/// SCIP 2.0 commands get a host string (";" and a number) that tells their answers from late ones
/// and from the scans of a stream. SCIP 1.x has none: after an exchange that failed the line is
/// read until it is silent, or a late answer would be taken for the next command's.
class cConversation {
 public:
  /// All talk goes over `port`.
  explicit cConversation(boost::shared_ptr<cScanPort> port);

  void setScip2(bool on) { scip2 = on; }
  bool isScip2() const { return scip2; }

  /// Sends `command` and waits for its answer, which begins within `timeout`.
  cAnswer ask(const std::string& command, std::chrono::milliseconds timeout);

  /// The same up to `tries` times, until the sensor answers, be it by a refusal.
  cAnswer ask(const std::string& command, std::chrono::milliseconds timeout, int tries);

  /// Sends `command`, in SCIP 2.0 with a host string of its own. The result is the line as it was
  /// sent, which is the answer's echo. "": it could not be sent.
  std::string send(const std::string& command);

  /// Receives one record, which begins before `deadline`; with `isWakeable` work ends that wait.
  /// False: none came whole, see `getPort().getEnd()`; what came of it is in the record.
  bool receive(cScanPort::cClock::time_point deadline, bool isWakeable);

  /// The latest record, and what it is as an answer.
  const cSCIPRecord& getRecord() const { return record; }
  cAnswer readAnswer() const;
  cScanPort& getPort() const { return *port; }

  /// Nothing that arrives until the line is silent belongs to the next exchange.
  void expectLeftovers() { hasLeftovers = true; }

 private:
  cAnswer receiveAnswer(const std::string& echo, cScanPort::cClock::time_point deadline);

  boost::shared_ptr<cScanPort> port;
  cTarvoLink link;
  cSCIPRecord record;
  bool scip2 = true;
  bool hasLeftovers = false;
  unsigned nextTag = 1;
};

/// Readable in a message, whatever the sensor sent.
std::string printable(std::string text);

/// Whether `line` ends in its sum, which is taken off.
bool stripSum(std::string_view& line);

/// Takes the next line, without its line feed, off the front of `text`; false: none is left.
bool nextLine(std::string_view& text, std::string_view& line);

}  // namespace tarvo
