#include "tarvolink/scip2/cSCIP2RecordListener.h"

#include <algorithm>
#include <boost/chrono.hpp>

#include "tarvolink/scip/decimal.h"

namespace {

using boost::chrono::steady_clock;

/// Whole milliseconds until `deadline`, rounded up so that a wait never ends too early.
int millisecondsUntil(steady_clock::time_point deadline) {
  return static_cast<int>(
      boost::chrono::ceil<boost::chrono::milliseconds>(deadline - steady_clock::now()).count());
}

}  // namespace

void cSCIP2RecordListener::resetResponse(std::string newCommand, int newTag, int newCount) {
  boost::mutex::scoped_lock guard(lock);
  command = std::move(newCommand);
  tag = newTag;
  count = newCount;
  discarding = false;
  // With records left, a waiter may have been signalled and not have woken yet.
  if (records.empty()) arrived.reset();
}

bool cSCIP2RecordListener::push(boost::shared_ptr<cSCIPRecord> record) {
  {
    boost::mutex::scoped_lock guard(lock);
    if (!answers(*record)) return false;
    // Counted even if it is dropped: the listener is free again only when all have come.
    if (!discarding) records.push_back(record);
    if (count > 0) --count;
    if (count == 0) busy = false;
  }
  // Without the lock, which the woken waiter takes first: held here it costs two system calls more.
  arrived.unblock();
  return true;
}

bool cSCIP2RecordListener::answers(const cSCIPRecord& record) const {
  const auto semicolon = record.echo.find(';');
  if (semicolon != std::string::npos) {
    return parseDecimal(record.echo.substr(semicolon + 1)) == tag;
  }
  return record.echo.substr(0, 2) == command.substr(0, 2);
}

boost::shared_ptr<cSCIPRecord> cSCIP2RecordListener::waitRecord(int timeout) {
  const auto deadline = steady_clock::now() + boost::chrono::milliseconds(std::max(timeout, 0));
  // A signal may be an earlier record's, taken long since: it alone does not end the wait.
  for (;;) {
    if (boost::shared_ptr<cSCIPRecord> record = take()) return record;
    const int remaining = millisecondsUntil(deadline);
    if (remaining <= 0) return boost::shared_ptr<cSCIPRecord>();
    arrived.wait_and_reset(remaining);
  }
}

boost::shared_ptr<cSCIPRecord> cSCIP2RecordListener::take() {
  boost::mutex::scoped_lock guard(lock);
  if (records.empty()) return boost::shared_ptr<cSCIPRecord>();
  boost::shared_ptr<cSCIPRecord> record = records.front();
  records.pop_front();
  // The signal is binary: one for two records has woken only one of two waiters.
  if (!records.empty()) arrived.unblock();
  return record;
}

bool cSCIP2RecordListener::hasRecords() {
  boost::mutex::scoped_lock guard(lock);
  return !records.empty();
}

bool cSCIP2RecordListener::isComplete() {
  boost::mutex::scoped_lock guard(lock);
  return count == 0;
}

bool cSCIP2RecordListener::isLateAnswer(const cSCIPRecord& record) {
  boost::mutex::scoped_lock guard(lock);
  return record.echo.find(';') != std::string::npos && !answers(record);
}

void cSCIP2RecordListener::clear() {
  boost::mutex::scoped_lock guard(lock);
  records.clear();
}

void cSCIP2RecordListener::discardFurther() {
  boost::mutex::scoped_lock guard(lock);
  records.clear();
  discarding = true;
}
