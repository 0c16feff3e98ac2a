#include "bench/cFeeder.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <new>
#include <stdexcept>
#include <system_error>

#include "bench/measure.h"
#include "bench/scanRecord.h"

namespace {

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

void writeAll(int fd, const std::string& bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t count = write(fd, bytes.data() + done, bytes.size() - done);
    if (count <= 0) fail("the reader closed the line");
    done += static_cast<std::size_t>(count);
  }
}

void sleepUntil(double moment) {
  timespec when{};
  when.tv_sec = static_cast<time_t>(std::floor(moment));
  when.tv_nsec = static_cast<long>((moment - std::floor(moment)) * 1e9);
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &when, nullptr) == EINTR) {
  }
}

std::string readLine(int fd) {
  std::string line;
  for (char c = 0; read(fd, &c, 1) == 1;) {
    if (c == '\n') return line;
    line += c;
  }
  fail("the reader closed the line");
}

std::string answerTo(const std::string& command) {
  std::string answer = command + "\n00P\n";
  if (command.compare(0, 2, "PP") == 0) {
    const auto line = [](const std::string& text) {
      return text + ";" + withSum(text).back() + "\n";
    };
    answer += line("DMIN:23") + line("DMAX:" + std::to_string(MAX_DISTANCE)) +
              line("ARES:" + std::to_string(STEPS_PER_TURN)) + line("AMIN:0") +
              line("AMAX:" + std::to_string(LAST_STEP)) +
              line("AFRT:" + std::to_string(FRONT_STEP)) + line("SCAN:2400");
  }
  return answer + "\n";
}

}  // namespace

void cFeeder::cUnmap::operator()(cSharedTimes* mapped) const {
  munmap(mapped, sizeof(cSharedTimes));
}

cFeeder::cSharedTimes* cFeeder::mapSharedTimes() {
  void* const memory = mmap(nullptr, sizeof(cSharedTimes), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) fail("no shared memory available (mmap)");
  return new (memory) cSharedTimes;
}

cFeeder::cFeeder(double period)
    : times(mapSharedTimes()),
      child(std::make_unique<cChild>([this, period](int) { feed(period); })) {
  pty.close();
}

double cFeeder::getEnd(std::size_t index) const { return times->ends[index]; }

void cFeeder::feed(double period) {
  const std::string record = makeScanRecord(serveUntilScan());
  double due = now();
  for (std::size_t index = 0;; ++index) {
    if (period > 0) sleepUntil(due += period);
    writeAll(pty.master.get(), record);
    if (index < MAX_RECORDS) times->ends[index] = now();
  }
}

/// Answers commands until a scan is requested; returns that command.
std::string cFeeder::serveUntilScan() {
  for (;;) {
    std::string command = readLine(pty.master.get());
    if (!command.empty()) writeAll(pty.master.get(), answerTo(command));
    if (command.compare(0, 2, "MD") == 0) return command;
  }
}
