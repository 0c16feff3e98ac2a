#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tarvoscan/cLineEvent.h"
#include "tarvoscan/cProblem.h"
#include "tarvoscan/cSensorInfo.h"
#include "tarvoscan/export.h"

namespace tarvo {

/// What kind of bytes a line carried when a sensor was asked; the later ones say more about the
/// cause.
enum class eLineContent {
  NOTHING,
  GARBAGE,  ///< bytes that are no text
  TEXT,     ///< text that is no answer
  ECHOED,   ///< what was sent, and nothing else
  ANSWER    ///< an answer in part
};

/// What was heard at one line speed. A plain value.
struct cHeardAtSpeed {
  int lineSpeed = 0;                             ///< bits per second
  eLineContent content = eLineContent::NOTHING;  ///< what kind of bytes
  std::size_t bytes = 0;                         ///< how many
  std::string excerpt;  ///< of TEXT: the beginning of its first line, printable

  /// For people, as "garbage (37 bytes)".
  std::string getText() const TARVOSCAN_API;
};

/// What a search found on one port. A plain value.
struct cSearchResult {
  std::string device;                         ///< the port's path
  std::shared_ptr<const cSensorInfo> sensor;  ///< empty: none was found
  cProblem problem;                           ///< why not
  std::vector<cHeardAtSpeed> heard;  ///< by speed, in the order tried; empty if it was not opened
};

/// Looks for sensors on several ports side by side. A sensor that was scanning is stopped ("QT") by
/// being found. A port where nothing answers takes up to five seconds.
class TARVOSCAN_API cSensorSearch {
 public:
  /// Begins to look at `devices`, each in a thread of its own, at the line speeds `lineSpeeds`
  /// (bits per second; none: those at which sensors are shipped). `onResult`, where there is one,
  /// is called with each result when it is known, one at a time, in the thread of its port; and
  /// `onLine` with what passes over each line, several at a time.
  explicit cSensorSearch(const std::vector<std::string>& devices,
                         const std::vector<int>& lineSpeeds = {},
                         std::function<void(const cSearchResult&)> onResult = nullptr,
                         tLineTap onLine = nullptr);
  /// Ends what is under way and waits for it: less than a second.
  ~cSensorSearch();
  cSensorSearch(const cSensorSearch&) = delete;
  cSensorSearch& operator=(const cSensorSearch&) = delete;

  /// Waits for all ports; their results in the order of `devices`. Any thread.
  std::vector<cSearchResult> wait();

  /// Ends what is under way; its results have no sensor. Async-signal-safe.
  void requestStop() noexcept;

 private:
  class TARVOSCAN_LOCAL cImpl;
  std::unique_ptr<cImpl> impl;
};

}  // namespace tarvo
