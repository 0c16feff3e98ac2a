#pragma once

#include <cstdint>

namespace kavTBX {

/// The settings of a serial line. A plain value: one caller at a time.
struct cPortSetting {
  /// Bits per second: 9600, 19200, 38400, 57600, 115200, 230400, 460800 or 500000.
  std::int32_t baudRate = 115200;
  std::int32_t charLength = 8;  ///< data bits per character: 7 or 8
  std::int32_t stopBits = 1;    ///< 1 or 2
  /// 0 none, 2 odd. Any other value clears all control flags except PARODD.
  std::int32_t parity = 0;
  bool softFlowControl = false;  ///< XON/XOFF on output (IXON)
  bool hardFlowControl = false;  ///< RTS/CTS (CRTSCTS)
};

}  // namespace kavTBX
