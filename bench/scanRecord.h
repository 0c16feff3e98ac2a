#pragma once

#include <cstddef>
#include <string>

/// The scan that every reader receives: the whole range of a long range sensor, three characters a
/// reading.
constexpr int LAST_STEP = 1080;
constexpr int READINGS = LAST_STEP + 1;
constexpr int STEPS_PER_TURN = 1440;
constexpr int FRONT_STEP = 540;
constexpr int MAX_DISTANCE = 60000;  ///< millimetres
constexpr double SCANS_PER_SECOND = 40;
constexpr const char* SCAN_COMMAND = "MD0000108001000";

/// `text` and its sum: the bytes added up, the low six bits, plus 0x30.
inline std::string withSum(const std::string& text) {
  unsigned sum = 0;
  for (const char c : text) sum += static_cast<unsigned char>(c);
  return text + static_cast<char>((sum & 0x3F) + 0x30);
}

/// What the sensor measures at `step`, in millimetres.
inline int distanceAt(int step) { return 500 + step * 37 % 40000; }

/// The record of one scan as it is sent, with `command` as its echo.
inline std::string makeScanRecord(const std::string& command) {
  std::string data;
  for (int step = 0; step < READINGS; ++step) {
    const int distance = distanceAt(step);
    for (const int shift : {12, 6, 0})
      data += static_cast<char>(((distance >> shift) & 0x3F) + 0x30);
  }
  std::string record = command + "\n" + withSum("99") + "\n" + withSum("0ab1") + "\n";
  constexpr std::size_t LINE = 64;
  for (std::size_t at = 0; at < data.size(); at += LINE)
    record += withSum(data.substr(at, LINE)) + "\n";
  return record + "\n";
}
