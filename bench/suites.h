#pragma once

#include <string>

#include "bench/cPlan.h"
#include "bench/cReport.h"

/// Each measures a group of rows and adds them to the report. They need a process without other
/// threads and throw std::runtime_error when something does not work.

/// 40 Hz: CPU and allocations a scan, latency; every reader in turn.
void measurePaced(const cPlan& plan, cReport& report);
/// As fast as it can be read: every reader in turn.
void measureFlood(const cPlan& plan, cReport& report);
/// System calls a record of every reader, and of an idle driver, counted by strace.
void measureSystemCalls(const cPlan& plan, cReport& report);
/// Record bytes in memory to a scan, beside plain decoding.
void measureDecoding(const cPlan& plan, cReport& report);
/// Many sensors on one process.
void measureScaling(const cPlan& plan, cReport& report);
/// From create to the first scan on real line speeds.
void measureStarting(const cPlan& plan, cReport& report);
