#pragma once

#include <optional>
#include <string>
#include <vector>

/// The faults that a simulated sensor can be given. Each takes a value (see simFaultTable for its
/// meaning and its default). Content faults work on one whole record: the bytes from the echo to
/// the closing empty line.
enum class eSimFault {
  // content
  GARBAGE,      ///< value random bytes are inserted before the record
  FORCED_BYTE,  ///< one byte, at a random place, becomes value (0..255)
  FLIPPED_BIT,  ///< bit value % 8 of byte value / 8 is flipped (modulo the record's length)
  LOST_BYTES,   ///< value bytes in a row are lost at a random place
  WRONG_SUM,    ///< the sum of line value is wrong (0: status, 1: time or first information line)
  CUT_SHORT,    ///< only the first value bytes are sent (0: half of the record)
  LOST_LINE_FEED,  ///< line feed number value is lost (0: the echo's)
  LOST_LINE,  ///< line value is lost with its line feed (0: the echo; -1: the last before the end)
  LOST_END,   ///< the closing empty line is lost
  DOUBLED_LINE,   ///< line value is sent twice
  SWAPPED_LINES,  ///< lines value and value + 1 change places
  EMPTY_STATUS,   ///< the status line is empty
  CR_LF,          ///< every line feed gets a carriage return before it
  STATUS,       ///< the status (with a right sum): 0..99, or two characters as simStatus packs them
  OTHER_ECHO,   ///< the echo's first two letters become XX (an answer to another command)
  OTHER_TAG,    ///< value is added to a decimal host string
  WRONG_COUNT,  ///< a scan has value readings more (or less, below 0), with right sums
  UNSOLICITED,  ///< a scan record that nobody asked for comes before it (host string value)
  ENDLESS_LINE,  ///< value bytes without a line feed come instead of the record
  ENDLESS_BODY,  ///< value bytes of body lines without an end come after the status
  // timing
  STALL,         ///< it goes on hearing and obeying, and says nothing; what falls due is lost
  LATE,          ///< answers (no records of a running scan) come value ms late
  NO_ANSWER,     ///< commands are obeyed but not answered
  BYTE_BY_BYTE,  ///< each byte is a write of its own, value microseconds apart
  SPLIT,         ///< the record comes in two writes, the first of value bytes (see SPLIT_PAUSE)
  SPLIT_PAUSE,   ///< milliseconds between the two writes of SPLIT
  BURSTS,        ///< bytes leave at multiples of value ms only
  // line
  UNPLUGGED  ///< the cable is pulled: set is unplug(), clear is plug()
};

/// One row of the table of faults.
struct cSimFaultInfo {
  eSimFault fault;
  const char* name;  ///< as written on a command line, "wrong-sum"
  int value;         ///< the value where none is given
  const char* text;  ///< one line of help
};

/// Every fault once, in the order of eSimFault.
const std::vector<cSimFaultInfo>& simFaultTable();

/// The fault of that name; empty if there is none.
std::optional<eSimFault> simFaultByName(const std::string& name);

/// The value for eSimFault::STATUS that stands for a status of two characters, such as "0E".
/// Throws std::invalid_argument for any other length.
int simStatus(const std::string& twoCharacters);
