#pragma once

#include "tests/support/cScriptedPeer.h"
#include "tests/support/driving.h"

/// A driver on a sensor that answers by a rule. Nothing was sent yet.
struct cScriptedDriver {
  explicit cScriptedDriver(cScriptedPeer::tRule rule) : peer(cable, std::move(rule)) {}

  cSensorDriverSCIP2* operator->() { return driver.get(); }

  cPtyPair cable;
  cScriptedPeer peer;
  tDriver2 driver = openDriver(cable.getPath());
};

/// `text` with its sum.
inline std::string summed(const std::string& text) { return text + cScriptedPeer::sum(text); }
