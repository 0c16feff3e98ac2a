#pragma once

#include <chrono>
#include <vector>

#include "tarvoscan/cProblem.h"
#include "tarvoscan/cSensorInfo.h"
#include "tarvoscan/cSensorSearch.h"
#include "tarvoscan/search/cConversation.h"

namespace tarvo {

/// Finds the sensor on an open port: line speed, dialect, identity.
///
/// A look at one speed is a line feed (which ends what may stand half in the sensor's buffer) and a
/// question, and waits for the question's echo with a status: one digit in SCIP 1.x, two characters
/// and a right sum in SCIP 2.0. "QT" comes first, since it ends a stream that somebody left
/// running; the text of a stream alone is no answer, it can be readable at a wrong speed. Sensors
/// that leave "QT" unanswered are asked for their version in the later rounds. A look is bounded by
/// time, whatever arrives.
class cSensorFinder {
 public:
  /// Talks over `conversation`.
  explicit cSensorFinder(cConversation& conversation);

  /// One look at `lineSpeed`, as in round `round` (0, 1 or 2, each waits longer); whether a sensor
  /// answered. Its dialect is then known to the conversation.
  bool look(int lineSpeed, int round);

  /// Three rounds over `lineSpeeds`, until a sensor answers, the device has gone or the end is
  /// asked for.
  bool search(const std::vector<int>& lineSpeeds);

  /// Asks the sensor that answered for its parameters, identity and status, after switching it to
  /// SCIP 2.0 where it can be. False, with `problem`: it does not report its parameters, without
  /// which its scans have no angles.
  bool identify(cSensorInfo& info, cProblem& problem);

  static constexpr int ROUNDS = 3;

 private:
  bool awaitVerdict(const std::vector<std::string>& questions, std::chrono::milliseconds patience);
  bool readVerdict(const std::string& status);
  void switchToScip2();

  cConversation& talk;
  eDialect dialect = eDialect::UNKNOWN;
};

/// The line speeds at which sensors are shipped, in the order tried, bits per second.
const std::vector<int>& usualSpeeds();

/// What a sensor can be asked about itself.
enum class eInformation { PARAMETERS, IDENTITY, STATUS };

/// The command for it: "PP", "VV" (SCIP 1.x: "V"), "II".
const char* commandFor(eInformation kind, bool isScip2);

/// Stores what an answer's body says in `info`. False: a line of it is damaged.
bool readInformation(eInformation kind, bool isScip2, const std::string& body, cSensorInfo& info);

/// Whether its scans have three characters a distance although it speaks SCIP 1.x.
bool isWideScip1(const cSensorInfo& info);

}  // namespace tarvo
