#include <fmt/core.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/utsname.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <thread>

#include "bench/suites.h"
#include "bench/tracing.h"

namespace {

struct cSuite {
  const char* name;
  void (*measure)(const cPlan&, cReport&);
};
const cSuite SUITES[] = {
    {"flood", measureFlood},       {"paced", measurePaced},       {"calls", measureSystemCalls},
    {"decoding", measureDecoding}, {"scaling", measureScaling},   {"starting", measureStarting},
    {"finding", measureFinding},   {"stopping", measureStopping},
};

struct cOptions {
  bool isQuick = false;
  std::string output = "bench.json";
  std::vector<std::string> only;
  std::string tracedReader;
  bool isTracedIdle = false;
  bool isTracedStopped = false;
  std::string tracedPath;
  double tracedAmount = 0;
};

void declare(CLI::App& app, cOptions& options) {
  std::vector<std::string> names;
  for (const cSuite& suite : SUITES) names.emplace_back(suite.name);
  app.add_flag("--quick", options.isQuick, "A rough run that takes four minutes");
  app.add_option("-o,--output", options.output, "Write the figures to this file, as JSON")
      ->capture_default_str();
  app.add_option("--only", options.only, "Measure only these groups")->check(CLI::IsMember(names));
  // Hidden: for the runs under strace.
  app.add_option("--traced-reader", options.tracedReader)->group("");
  app.add_flag("--traced-idle", options.isTracedIdle)->group("");
  app.add_flag("--traced-stopped", options.isTracedStopped)->group("");
  app.add_option("--traced-path", options.tracedPath)->group("");
  app.add_option("--traced-amount", options.tracedAmount)->group("");
}

double getLoad() {
  double load = 0;
  getloadavg(&load, 1);
  return load;
}

/// Measures and reports; returns how many suites failed.
int bench(const cOptions& options) {
  const cPlan plan = options.isQuick ? cPlan::quick() : cPlan();
  cReport report;
  utsname system{};
  uname(&system);
  report.note("kernel", system.release);
  report.note("cores", std::thread::hardware_concurrency());
  report.note("rounds", plan.rounds);
  report.note("load_before", getLoad());
  int failures = 0;
  for (const cSuite& suite : SUITES) {
    const auto& only = options.only;
    if (!only.empty() && std::find(only.begin(), only.end(), suite.name) == only.end()) continue;
    fmt::print(stderr, "tarvobench: {}...\n", suite.name);
    try {
      suite.measure(plan, report);
    } catch (const std::exception& error) {
      ++failures;
      fmt::print(stderr, "tarvobench: {} could not be measured: {}\n", suite.name, error.what());
    }
  }
  report.note("load_after", getLoad());
  report.print();
  report.write(options.output);
  return failures;
}

int measure(const cOptions& options) {
  signal(SIGHUP, SIG_IGN);   // a pty hangs up at the end of each measurement
  std::cerr.rdbuf(nullptr);  // discards the library's messages; ours do not use it
  if (!options.tracedReader.empty()) {
    runTracedReader(options.tracedReader, options.tracedPath,
                    static_cast<int>(options.tracedAmount));
    return 0;
  }
  if (options.isTracedIdle) {
    runTracedIdle(options.tracedPath, options.tracedAmount);
    return 0;
  }
  if (options.isTracedStopped) {
    runTracedStopped(options.tracedPath, options.tracedAmount);
    return 0;
  }
  return bench(options) == 0 ? 0 : 1;
}

int run(int argc, char** argv) {
  CLI::App app("Measures the libraries against bare loops, on simulated sensors.");
  cOptions options;
  declare(app, options);
  CLI11_PARSE(app, argc, argv);
  return measure(options);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    fmt::print(stderr, "tarvobench: {}\n", error.what());
    return 1;
  }
}
