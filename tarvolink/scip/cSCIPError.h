#pragma once

#include <string>

#include "tarvolink/export.h"

/// The code words of exchanges with a sensor.
///
/// A code word is 0 (no error recorded), or a failure of the exchange (`ETIMEOUT_ECHO` to
/// `EINVALID_STATUS`), or a protocol mark (`ESCIP1_STATUS`, `ESCIP2_STATUS`, `ESCIP2_EXTSTATUS`)
/// combined with the sensor's own status in the bits of `ESTATUS_MASK`. The failure bits lie under
/// that mask too, so test for a protocol mark before you read the masked bits as a sensor's status.
/// A SCIP 1.x status "0" is 0x400, which is a success.
class TARVOLINK_API cSCIPError {
 public:
  static const int ETIMEOUT_ECHO;     ///< 0x0001: no echo line before the read time-out
  static const int ETIMEOUT_STAT;     ///< 0x0002: no status line
  static const int ETIMEOUT_BODY;     ///< 0x0004: no empty line closed the body
  static const int EINVALID_ECHO;     ///< 0x0008: the echo is not the command that was sent
  static const int EINVALID_STATUS;   ///< 0x0010: the status line is malformed
  static const int ESCIP1_STATUS;     ///< 0x0400: masked bits are a SCIP 1.x status, 0 to 9
  static const int ESCIP2_STATUS;     ///< 0x0800: masked bits are a SCIP 2.0 status number
  static const int ESCIP2_EXTSTATUS;  ///< 0x1000: masked bits are a SCIP 2.0 status letter
  static const int ESTATUS_MASK;      ///< 0x03FF: the bits of the sensor's status

  /// "Success" for 0, "Error String Not implemented yet." for any other code; `detail` is not
  /// used. The text lives as long as the library. Any thread.
  static const std::string& getErrorString(int code, std::string detail);

  static const std::string& successStr();  ///< "Success". Any thread.
  static const std::string& notYetStr();   ///< "Error String Not implemented yet." Any thread.
};
