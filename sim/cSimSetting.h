#pragma once

#include <cstdint>
#include <functional>
#include <string>

/// The model classes; cSimModel has the steps, distances, turning rate and error values of each.
enum class eSimModel { SHORT_RANGE, MIDDLE_RANGE, LONG_RANGE };

/// What the sensor speaks. SCIP1 refuses the "SCIP2.0" command, SCIP1_SWITCH accepts it; both
/// speak SCIP 1.x when powered on. They are meant for the short and middle range models.
enum class eSimDialect { SCIP2, SCIP1, SCIP1_SWITCH };

/// The reply to unknown (or blank) commands: a status (0E in SCIP 2.0, a nonzero digit in
/// SCIP 1.x), only the echo and the closing empty line, or nothing at all.
enum class eSimUnknown { STATUS, ECHO_ONLY, SILENT };

/// What bytes turn into, in both directions, when the line speeds differ: garbage with or without
/// line feeds as the seed decides (anew for each burst of bytes), always with, or never with any.
enum class eSimGarbage { BY_SEED, LINES, NO_LINES };

/// How "II" values carry the remark "<-Default setting by user": not at all, covered by the sum,
/// or between the value and ";" but not covered by the sum.
enum class eSimRemark { NONE, INSIDE_SUM, OUTSIDE_SUM };

/// The configuration of a simulated sensor. A plain value; the sensor keeps a copy.
struct cSimSetting {
  eSimModel model = eSimModel::SHORT_RANGE;
  eSimDialect dialect = eSimDialect::SCIP2;

  /// Line speed in bits/s, one that termios has a constant for. Only a host at this speed can talk
  /// to the sensor, and the sensor sends no faster (10 bits a byte). 0: any speed works and bytes
  /// take no time (a USB sensor).
  int speed = 0;

  /// Scans per second, above 0 and up to 1000; 0: the model's own rate.
  double rate = 0;

  /// true: one scan a turn; a scan is skipped whole while the one before it is still being sent.
  /// false: scans come as fast as the reader takes them and the line takes no time; what is sent
  /// waits for room in the pty, and nothing is skipped.
  bool paced = true;

  /// Determines the noise, where the person in the room walks, and every fault that is random.
  std::uint32_t seed = 1;

  /// Whether a scan is already running when the sensor appears (left behind by an earlier
  /// program). SCIP1 has no such command and ignores this; SCIP1_SWITCH then starts in SCIP 2.0.
  bool scanningAtStart = false;

  /// The MD or MS that runs then; "": an endless MD over the whole range with the host string "4".
  std::string commandAtStart;

  eSimUnknown unknownCommands = eSimUnknown::STATUS;
  eSimUnknown blankCommands = eSimUnknown::SILENT;
  eSimGarbage garbage = eSimGarbage::BY_SEED;
  eSimRemark remark = eSimRemark::INSIDE_SUM;

  /// SCIP 1.x with three characters a reading, and the protocol identity that says so.
  bool threeCharScip1 = false;

  /// A symlink to the slave's path that exists while the sensor is plugged in; "": none. An older
  /// symlink of that name is replaced in one step; any other kind of file is an error.
  std::string link;

  /// Called with each command line received, blank ones left out, before the sensor answers it.
  /// Runs in the sensor's own thread. It must not call plug, unplug or clearFaults, nor destroy
  /// the sensor.
  std::function<void(const std::string&)> onCommand;
};
