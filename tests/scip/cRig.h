#pragma once

#include <boost/shared_ptr.hpp>

#include "tarvolink/scip/cTarvoLink.h"
#include "tests/base/measure.h"
#include "tests/support/cPtyPair.h"
#include "tests/support/cScriptedPeer.h"

inline std::string answer(const std::string& line) { return cScriptedPeer::respond(line); }

inline std::string keepSilent(const std::string&) { return ""; }

/// A link to a sensor that answers by `rule`. Reads wait for `timeout` milliseconds.
struct cRig {
  using tPort = kavTBX::basic_portbuf<char>;

  explicit cRig(cScriptedPeer::tRule rule, int timeout = 50)
      : port(new tPort(cable.getPath(), boost::shared_ptr<kavTBX::cPortSetting>())),
        link(new cTarvoLink(port)),
        peer(cable, rule) {
    port->readTimeout = timeout;
  }

  void hangUp() {
    peer.end();
    cable.hangUp();
  }

  cPtyPair cable;
  boost::shared_ptr<tPort> port;
  boost::shared_ptr<cTarvoLink> link;
  cScriptedPeer peer;
};
