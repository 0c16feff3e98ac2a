#pragma once

#include <cstdint>
#include <functional>
#include <string>

/// The model classes: steps, distances, turning rate and line as cSimModel has them.
enum class eSimModel { SHORT_RANGE, MIDDLE_RANGE, LONG_RANGE };

/// What the sensor speaks. SCIP1 refuses the "SCIP2.0" command, SCIP1_SWITCH accepts it; both
/// speak SCIP 1.x when powered on. They are meant for the short and middle range models.
enum class eSimDialect { SCIP2, SCIP1, SCIP1_SWITCH };

/// What unknown (or blank) commands get: a status (0E in SCIP 2.0, a nonzero digit in SCIP 1.x),
/// their echo and the closing empty line only, or nothing at all.
enum class eSimUnknown { STATUS, ECHO_ONLY, SILENT };

/// What a wrong line speed makes of bytes, in both directions: either kind as the seed has it
/// (drawn anew for each burst of bytes), always with some line feeds, or never with any.
enum class eSimGarbage { BY_SEED, LINES, NO_LINES };

/// How "II" values carry the remark "<-Default setting by user": not at all, inside the sum, or
/// between value and ";" but outside the sum.
enum class eSimRemark { NONE, INSIDE_SUM, OUTSIDE_SUM };

/// How a simulated sensor is made. A plain value; the sensor keeps a copy.
struct cSimSetting {
  eSimModel model = eSimModel::SHORT_RANGE;
  eSimDialect dialect = eSimDialect::SCIP2;

  /// Line speed in bits/s, one that termios has a constant for. The sensor hears and is heard only
  /// by a host at this speed, and sends no faster (10 bits a byte). 0: any speed will do and bytes
  /// take no time (a USB sensor).
  int speed = 0;

  /// Scans per second, above 0 and up to 1000; 0: the model's own.
  double rate = 0;

  /// false: scans come as fast as the reader takes them and the line takes no time; what leaves
  /// waits for room in the pty, nothing is skipped. true: one scan a turn; a scan is skipped whole
  /// while the one before it is still leaving.
  bool paced = true;

  /// The world's noise, the room's person and every fault that draws lots follow from it.
  std::uint32_t seed = 1;

  /// A scan command is already running when the sensor appears (what an earlier program left).
  /// SCIP1 has no such command and ignores it; SCIP1_SWITCH then begins in SCIP 2.0.
  bool scanningAtStart = false;

  /// The command that runs then; "": an endless MD over the whole range with the host string "4".
  std::string leftCommand;

  eSimUnknown unknownCommands = eSimUnknown::STATUS;
  eSimUnknown blankCommands = eSimUnknown::SILENT;
  eSimGarbage garbage = eSimGarbage::BY_SEED;
  eSimRemark remark = eSimRemark::INSIDE_SUM;

  /// SCIP 1.x with the three-character data form and its protocol identity.
  bool threeCharScip1 = false;

  /// A symlink that is kept on the slave's path while the sensor is plugged in; "": none. An
  /// older symlink of that name is replaced in one step, any other kind of file is an error.
  std::string link;

  /// Called for each command line heard that is not blank, before it is answered, in the sensor's
  /// own thread. It must not call plug, unplug or clearFaults, nor destroy the sensor.
  std::function<void(const std::string&)> onCommand;
};
