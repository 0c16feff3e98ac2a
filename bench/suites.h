#pragma once

#include <string>

#include "bench/cPlan.h"
#include "bench/cReport.h"

/// Each measures a group of rows and adds them to the report. Each needs a process with a single
/// thread, and throws std::runtime_error on failure.

/// At 40 Hz: CPU time and allocations per scan, latency; every reader.
void measurePaced(const cPlan& plan, cReport& report);
/// As fast as possible: throughput; every reader.
void measureFlood(const cPlan& plan, cReport& report);
/// System calls per record of every reader, and per second of an idle driver and of a
/// stopped scanner, counted by strace.
void measureSystemCalls(const cPlan& plan, cReport& report);
/// From a record's bytes in memory to a scan, compared with plain decoding.
void measureDecoding(const cPlan& plan, cReport& report);
/// Many sensors in one process.
void measureScaling(const cPlan& plan, cReport& report);
/// From create to the first scan, at real line speeds.
void measureStarting(const cPlan& plan, cReport& report);
/// A scanner's first scan, and its verdict where there is no sensor, at real line speeds.
void measureFinding(const cPlan& plan, cReport& report);
/// How long a scanner takes to stop, wherever it is.
void measureStopping(const cPlan& plan, cReport& report);
