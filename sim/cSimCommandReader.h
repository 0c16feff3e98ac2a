#pragma once

#include <optional>
#include <string>

/// A line that the sensor received.
struct cSimCommand {
  std::string text;      ///< without its line end
  bool tooLong = false;  ///< longer than the command buffer; text is its beginning
};

/// The sensor's command buffer: bytes in, lines out. A line ends with LF, CR or CR LF.
class cSimCommandReader {
 public:
  static constexpr std::size_t BUFFER = 128;  ///< bytes of a line that are kept

  /// Takes one byte; returns the line if this byte ended one (also a blank line).
  std::optional<cSimCommand> receive(char byte);
  void clear() { *this = cSimCommandReader(); }

 private:
  cSimCommand command;
  bool afterReturn = false;
};
