#pragma once

#include <optional>
#include <string>

/// A line that the sensor heard.
struct cSimCommand {
  std::string text;      ///< without its line end
  bool tooLong = false;  ///< it did not fit the command buffer; text is its beginning
};

/// The sensor's command buffer: bytes in, lines out. A line ends with LF, CR or CR LF.
class cSimCommandReader {
 public:
  static constexpr std::size_t BUFFER = 128;  ///< bytes of a line that are kept

  /// Takes one byte; the line, when this byte ended one (a blank line too).
  std::optional<cSimCommand> hear(char byte);
  void clear() { *this = cSimCommandReader(); }

 private:
  cSimCommand command;
  bool afterReturn = false;
};
