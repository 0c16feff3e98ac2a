#pragma once

#include <sys/eventfd.h>

#include <condition_variable>
#include <mutex>

#include "tests/support/cPtyPair.h"

/// A sensor that answers by a rule: a thread at the master hands each line to the rule and
/// writes what it returns.
class cScriptedPeer {
 public:
  using tRule = std::function<std::string(const std::string& line)>;

  cScriptedPeer(const cPtyPair& givenCable, tRule givenRule)
      : cable(givenCable), rule(std::move(givenRule)), stop(eventfd(0, EFD_CLOEXEC)) {
    thread = std::thread([this] { work(); });
  }
  ~cScriptedPeer() {
    end();
    close(stop);
  }

  /// Answers no more; the cable stays.
  void end() {
    eventfd_write(stop, 1);
    if (thread.joinable()) thread.join();
  }

  /// The lines heard, once there are at least `count` of them.
  std::vector<std::string> waitLines(std::size_t count) {
    std::unique_lock<std::mutex> lock(mutex);
    heard.wait_for(lock, LONG_TIME, [&] { return lines.size() >= count; });
    return lines;
  }

  /// The character that ends a line with this text: its bytes added up.
  static char sum(const std::string& text) {
    unsigned total = 0;
    for (const char c : text) total += static_cast<unsigned char>(c);
    return static_cast<char>((total & 0x3F) + 0x30);
  }

  /// A whole response: echo, status with its sum, body lines as given.
  static std::string respond(const std::string& echo, const std::string& status = "00",
                             const std::string& body = "") {
    return echo + "\n" + status + sum(status) + "\n" + body + "\n";
  }

 private:
  void work() {
    std::string line;
    for (;;) {
      pollfd waiting[] = {{stop, POLLIN, 0}, {cable.getMaster(), POLLIN, 0}};
      poll(waiting, 2, -1);
      if (waiting[0].revents != 0) return;
      char c = 0;
      if (read(cable.getMaster(), &c, 1) != 1) continue;
      line += c;
      if (c != '\n') continue;
      line.pop_back();
      cable.send(rule(line));
      std::lock_guard<std::mutex> lock(mutex);
      lines.push_back(line);
      heard.notify_all();
      line.clear();
    }
  }

  const cPtyPair& cable;
  const tRule rule;
  const int stop;
  std::mutex mutex;
  std::condition_variable heard;
  std::vector<std::string> lines;  // under mutex
  std::thread thread;
};
