#include "bench/cTracedRun.h"

#include <fmt/core.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <fstream>
#include <numeric>
#include <stdexcept>

#include "bench/cDescriptor.h"

namespace {

constexpr const char* BEGIN = "tarvobench:begin";
constexpr const char* END = "tarvobench:end";

std::string getOwnPath() {
  char path[PATH_MAX] = {};
  if (readlink("/proc/self/exe", path, sizeof path - 1) <= 0) {
    throw std::runtime_error("cannot read /proc/self/exe");
  }
  return path;
}

/// A file that exists as long as this object.
class cTemporaryFile {
 public:
  cTemporaryFile() : descriptor(mkstemp(path.data())) {}
  ~cTemporaryFile() { unlink(path.c_str()); }
  cTemporaryFile(const cTemporaryFile&) = delete;
  cTemporaryFile& operator=(const cTemporaryFile&) = delete;
  const std::string& getPath() const { return path; }

 private:
  std::string path = "/tmp/tarvobench.XXXXXX";
  cDescriptor descriptor;
};

/// Runs a program and waits for its end; returns its exit status, 127 if it has none.
int run(std::vector<std::string> words) {
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    execvp(pointers[0], pointers.data());
    _exit(127);
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 127;
}

bool has(const std::string& line, const char* text) { return line.find(text) != std::string::npos; }

}  // namespace

cTracedRun::cTracedRun(const std::vector<std::string>& arguments) {
  const cTemporaryFile trace;
  std::vector<std::string> words = {"strace", "-f", "-qq", "-o", trace.getPath(), getOwnPath()};
  words.insert(words.end(), arguments.begin(), arguments.end());
  const int status = run(words);
  if (status != 0) {
    throw std::runtime_error(
        fmt::format("strace ended with status {}; is it installed (script/setup bench) and "
                    "allowed to trace here?",
                    status));
  }
  readTrace(trace.getPath());
}

/// Lines are "PID name(arguments) = result". A call that another thread's line interrupts is named
/// again when it is "resumed"; it counts where it began.
void cTracedRun::readTrace(const std::string& path) {
  std::ifstream lines(path);
  bool isBegun = false;
  for (std::string line; std::getline(lines, line);) {
    if (has(line, END)) return;
    const std::size_t name = line.find_first_not_of(" 0123456789");
    const std::size_t bracket = line.find('(');
    const bool isCall = bracket != std::string::npos && !has(line, " resumed>");
    if (isBegun && isCall) ++calls[line.substr(name, bracket - name)];
    if (has(line, BEGIN)) isBegun = true;
  }
  throw std::runtime_error("the trace lacks the end mark");
}

int cTracedRun::count(const std::string& name) const {
  const auto place = calls.find(name);
  return place == calls.end() ? 0 : place->second;
}

int cTracedRun::countAll() const {
  return std::accumulate(calls.begin(), calls.end(), 0,
                         [](int sum, const auto& call) { return sum + call.second; });
}

void cTracedRun::markBegin() { (void)!access(BEGIN, F_OK); }
void cTracedRun::markEnd() { (void)!access(END, F_OK); }
