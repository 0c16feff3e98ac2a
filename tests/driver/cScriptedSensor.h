#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "sim/tarvosim.h"

/// A sensor whose answers the test writes, byte for byte.
class cScriptedSensor {
 public:
  /// What is said to a command line (as heard, with its tag); "" for nothing.
  using tScript = std::function<std::string(const std::string& line)>;

  explicit cScriptedSensor(tScript givenScript);

  void setScript(tScript newScript);

  const std::string& getPath() const { return sensor->getPath(); }
  std::vector<std::string> getCommands() const { return sensor->getCommands(); }
  void say(const std::string& bytes) { sensor->say(bytes); }

 private:
  std::mutex mutex;  // guards script; the sensor's thread finds `sensor` set
  tScript script;
  std::unique_ptr<cSimSensor> sensor;
};

/// `text` with its sum.
std::string summed(const std::string& text);

/// A whole SCIP 2.0 record; the status gets its sum, the body is lines with their ends.
std::string record(const std::string& echo, const std::string& status,
                   const std::string& body = "");

/// An information line: key, ":", value, ";", sum.
std::string field(const std::string& keyAndValue);
