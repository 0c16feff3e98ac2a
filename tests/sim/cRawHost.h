#pragma once

#include <chrono>
#include <string>
#include <vector>

/// A host that knows nothing but termios, read and write: the tests' end of the cable. Its waits
/// end when what they wait for is there, or after ten seconds.
class cRawHost {
 public:
  /// Opens the slave raw at this line speed (0: as it is).
  explicit cRawHost(const std::string& path, int speed = 0);
  ~cRawHost();
  cRawHost(const cRawHost&) = delete;
  cRawHost& operator=(const cRawHost&) = delete;

  void setSpeed(int bitsPerSecond);
  void write(const std::string& bytes);
  /// What arrives up to and with `end`; all that arrived if that does not come.
  std::string readUntil(const std::string& end);
  /// One record: up to its empty line.
  std::string readRecord() { return readUntil("\n\n"); }
  std::string readBytes(std::size_t count);
  /// Writes the command and LF, reads the record.
  std::string ask(const std::string& command);
  /// All that was said before the answer to a QT sent now.
  std::string readAll();
  /// Throws away what has arrived and was not read (tcflush).
  void flush();
  /// Whether read says end-of-file or an error once nothing is left.
  bool isHungUp();

 private:
  bool readSome();
  std::string take(std::size_t count);

  int fd;
  std::string arrived;  ///< read and not yet taken
};

/// How the tests check and decode, apart from the sensor's own code.
namespace raw {
char sum(const std::string& text);
std::vector<std::string> lines(const std::string& record);
/// The readings of a SCIP 2.0 scan record whose sums are all right; none if one is not.
std::vector<int> readings(const std::string& record, int width);
std::vector<int> decode(const std::string& data, int width);
}  // namespace raw
