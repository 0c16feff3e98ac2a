#include "sim/cSimCommandReader.h"

#include <utility>

std::optional<cSimCommand> cSimCommandReader::receive(char byte) {
  const bool secondHalf = afterReturn && byte == '\n';
  afterReturn = byte == '\r';
  if (secondHalf) return std::nullopt;
  if (byte == '\n' || byte == '\r') return std::exchange(command, cSimCommand());
  if (command.text.size() < BUFFER)
    command.text += byte;
  else
    command.tooLong = true;
  return std::nullopt;
}
