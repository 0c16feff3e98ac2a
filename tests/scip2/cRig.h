#pragma once

#include <boost/shared_ptr.hpp>

#include "tarvolink/scip/cTarvoLink.h"
#include "tests/support/cPtyPair.h"
#include "tests/support/cScriptedPeer.h"

constexpr int PATIENCE = 8000;  // milliseconds

/// A link to a sensor that answers by `rule`. Reads wait for `timeout` milliseconds.
struct cRig {
  using tPort = kavTBX::basic_portbuf<char>;

  explicit cRig(cScriptedPeer::tRule rule, int timeout = 50)
      : port(new tPort(cable.getPath(), boost::shared_ptr<kavTBX::cPortSetting>())),
        link(new cTarvoLink(port)),
        peer(cable, rule) {
    port->readTimeout = timeout;
  }

  cPtyPair cable;
  boost::shared_ptr<tPort> port;
  boost::shared_ptr<cTarvoLink> link;
  cScriptedPeer peer;
};

/// Milliseconds that `action` takes.
template <typename Action>
long measure(Action action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                               start)
      .count();
}

/// The echo of a record, or a word for none.
inline std::string echoOf(const boost::shared_ptr<cSCIPRecord>& record) {
  return record ? record->echo : "(none)";
}
