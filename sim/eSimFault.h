#pragma once

#include <optional>
#include <string>
#include <vector>

/// The faults that a simulated sensor can have. Each takes a value; simFaultTable gives its
/// meaning and its default. A content fault changes one whole record: the bytes from the echo to
/// the closing empty line.
enum class eSimFault {
  // content
  GARBAGE,      ///< value random bytes precede the record
  FORCED_BYTE,  ///< one byte, at a random place, becomes value (0..255)
  FLIPPED_BIT,  ///< bit value % 8 of byte value / 8 is flipped (modulo the record's length)
  LOST_BYTES,   ///< value consecutive bytes are lost at a random place
  WRONG_SUM,    ///< the sum of line value is wrong (0: status, 1: time or first information line)
  CUT_SHORT,    ///< only the first value bytes are sent (0: half of the record)
  LOST_LINE_FEED,  ///< line feed number value is lost (0: the echo's)
  LOST_LINE,  ///< line value is lost with its line feed (0: the echo; -1: the last before the end)
  LOST_END,   ///< the closing empty line is lost
  DOUBLED_LINE,   ///< line value is sent twice
  SWAPPED_LINES,  ///< lines value and value + 1 are swapped
  EMPTY_STATUS,   ///< the status line is empty
  CR_LF,          ///< a carriage return precedes every line feed
  STATUS,         ///< the status is this one, with a right sum: 0..99, or as simStatus packs it
  OTHER_ECHO,     ///< the echo begins with XX (an answer to another command)
  OTHER_TAG,      ///< value is added to a decimal host string
  WRONG_COUNT,    ///< a scan has value more readings (fewer, below 0), with right sums
  UNSOLICITED,    ///< a scan record that nobody requested precedes it (host string value)
  ENDLESS_LINE,   ///< value bytes without a line feed replace the record
  ENDLESS_BODY,   ///< value bytes of body lines without an end follow the status
  // timing
  STALL,         ///< commands are obeyed but nothing is sent; what falls due is lost
  LATE,          ///< answers (not the records of a running scan) come value ms late
  NO_ANSWER,     ///< commands are obeyed but not answered
  BYTE_BY_BYTE,  ///< each byte is a write of its own, value microseconds apart
  SPLIT,         ///< the record comes in two writes, the first of value bytes (see SPLIT_PAUSE)
  SPLIT_PAUSE,   ///< milliseconds between the two writes of SPLIT
  BURSTS,        ///< bytes leave only at multiples of value ms
  // line
  UNPLUGGED  ///< the cable is pulled: setFault is unplug(), clearFault is plug()
};

/// One row of the table of faults.
struct cSimFaultInfo {
  eSimFault fault;
  const char* name;  ///< as on a command line, "wrong-sum"
  int value;         ///< the default value
  const char* text;  ///< one line of help; VALUE stands for the value
};

/// Every fault once, in the order of eSimFault. Any thread.
const std::vector<cSimFaultInfo>& simFaultTable();

/// The fault of that name; empty if there is none. Any thread.
std::optional<eSimFault> simFaultByName(const std::string& name);

/// The value for eSimFault::STATUS that stands for a status of two characters, such as "0E".
/// Throws std::invalid_argument for any other length. Any thread.
int simStatus(const std::string& twoCharacters);
