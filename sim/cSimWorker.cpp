#include "sim/cSimWorker.h"

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <utility>

#include "sim/cSimError.h"

namespace {

constexpr std::size_t WAITING_MOST = 1 << 20;  // bytes of answers to a host that does not read

// A host's tcflush makes room in the pty without waking its master, so a full one is looked at
// again and again.
constexpr auto ROOM_AGAIN = std::chrono::milliseconds(20);

int openEvent() {
  const int fd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (fd < 0) throwSimError("no descriptor for waking the thread (eventfd)");
  return fd;
}

double rateOf(const cSimSetting& setting, const cSimModel& model) {
  return setting.rate > 0 ? setting.rate : model.rate();
}

/// Runs a function in a thread that no signal of the host program ever interrupts.
template <class tFunction>
std::thread startThread(tFunction function) {
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  try {
    std::thread thread(function);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
  } catch (...) {
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    throw;
  }
}

}  // namespace

cSimWorker::cSimWorker(const cSimSetting& sensorSetting, const cSimModel& sensorModel,
                       const cSimWorld& sensorWorld, cSimFaults& sensorFaults, cSimLog& sensorLog)
    : setting(sensorSetting),
      faults(sensorFaults),
      log(sensorLog),
      line(setting, setting.seed),
      link(setting.link, line.getPty().getPath()),
      event(openEvent()),
      protocol(setting, sensorModel, sensorWorld),
      damage(sensorFaults, setting.seed + std::uint64_t(1)),
      outbox(sensorFaults),
      turns(cSimTurn::cClock::now(), rateOf(setting, sensorModel)),
      speed(setting.speed) {
  const bool scans = setting.scanningAtStart && setting.dialect != eSimDialect::SCIP1;
  if (scans && protocol.getTask() == nullptr)
    throwSimError("\"" + setting.leftCommand + "\" is no MD or MS that this model takes", EINVAL);
  outbox.setSpeed(setting.paced ? setting.speed : 0);
  thread = startThread([this] { run(); });
}

cSimWorker::~cSimWorker() {
  stopping = true;
  wake();
  thread.join();
}

void cSimWorker::wake() {
  const std::uint64_t one = 1;
  // A full counter (EAGAIN) wakes as well.
  if (write(event.get(), &one, sizeof one) < 0 && errno != EAGAIN) std::terminate();
}

void cSimWorker::drainWakeUp() {
  std::uint64_t count = 0;
  while (read(event.get(), &count, sizeof count) > 0) {
  }
}

void cSimWorker::say(const std::string& bytes) {
  {
    std::lock_guard<std::mutex> lock(mutex);
    said.push_back(bytes);
  }
  wake();
}

void cSimWorker::run() {
  while (!stopping) {
    const cMoment now = cSimTurn::cClock::now();
    takeSaid(now);
    hear(now);
    followTask(now);
    pump(now);
    sleep(now);
  }
}

std::optional<cSimWorker::cMoment> cSimWorker::wakeAt(cMoment now) const {
  if (isStalled())
    return setting.paced && nextScan != 0 ? std::optional(turns.endOf(nextScan)) : std::nullopt;
  std::optional<cMoment> when;
  const auto also = [&](cMoment moment) { when = std::min(when.value_or(moment), moment); };
  if (!outbox.isEmpty()) also(blocked ? now + ROOM_AGAIN : outbox.nextAt());
  if (nextScan != 0 && setting.paced) also(turns.endOf(nextScan));
  if (nextScan != 0 && !setting.paced && outbox.isEmpty()) also(quietUntil);
  return when;
}

void cSimWorker::sleep(cMoment now) {
  const short room = blocked && !isStalled() ? POLLOUT : 0;
  pollfd watched[] = {{line.getPty().getMaster(), static_cast<short>(POLLIN | room), 0},
                      {event.get(), POLLIN, 0}};
  timespec span{};
  const auto when = wakeAt(now);
  if (when) {
    const auto left = std::max(*when - cSimTurn::cClock::now(), cSimOutbox::cSpan(0));
    span.tv_sec = static_cast<time_t>(left.count() / 1000000000);
    span.tv_nsec = static_cast<long>(left.count() % 1000000000);
  }
  if (ppoll(watched, 2, when ? &span : nullptr, nullptr) > 0 && watched[1].revents != 0)
    drainWakeUp();
}

void cSimWorker::takeSaid(cMoment now) {
  std::vector<std::string> bytes;
  {
    std::lock_guard<std::mutex> lock(mutex);
    bytes.swap(said);
  }
  for (std::string& text : bytes) {
    cSimRecord record;
    record.bytes = std::move(text);
    if (!record.bytes.empty()) outbox.push(std::move(record), now);
  }
}

void cSimWorker::hear(cMoment now) {
  const std::string bytes = line.hear();
  if (bytes.empty()) return;
  log.heard(bytes.size());
  for (char byte : bytes) {
    const auto command = protocol.hear(byte);
    if (command) answer(*command, now);
  }
}

cSimMoment cSimWorker::momentAt(cMoment now) const {
  const std::uint32_t ended = getTurn(now);
  cSimMoment moment;
  moment.stamp = setting.paced ? turns.stampAt(now) : turns.stampOf(turn);
  moment.nextScan = std::max(ended, turn) + 1;
  moment.lastScan = setting.paced ? ended : moment.nextScan;
  moment.lastStamp = turns.stampOf(moment.lastScan);
  moment.nextStamp = turns.stampOf(moment.nextScan);
  return moment;
}

void cSimWorker::answer(const cSimCommand& command, cMoment now) {
  if (!command.text.empty()) {
    log.heardCommand(command.text);
    if (setting.onCommand) setting.onCommand(command.text);
  }
  cSimRecord record = protocol.answer(command, momentAt(now));
  if (record.newRate) turns.setRate(*record.newRate, now);
  if (record.starts) nextScan = getTurn(now) + 1;
  if (record.scan) turn = *record.scan;
  if (!record.bytes.empty()) send(std::move(record), now);
}

void cSimWorker::followTask(cMoment now) {
  scanning = protocol.getTask() != nullptr;
  if (!scanning)
    nextScan = 0;
  else if (nextScan == 0)
    nextScan = getTurn(now) + 1;
  if (nextScan == 0) return;
  if (setting.paced)
    scanPaced(now);
  else
    scanUnpaced(now);
}

void cSimWorker::scanPaced(cMoment now) {
  const std::uint32_t newest = turns.endedAt(now);
  if (nextScan > newest) return;
  const auto every = static_cast<std::uint32_t>(protocol.getTask()->interval) + 1;
  const std::uint32_t missed = (newest - nextScan) / every;
  const std::uint32_t number = nextScan + missed * every;
  const bool busy = outbox.hasRunningScan();
  if (missed > 0 || busy) log.skippedScans(missed + (busy ? 1 : 0));
  nextScan = number + every;
  if (!busy) sendScan(number, now);
}

void cSimWorker::scanUnpaced(cMoment now) {
  if (!outbox.isEmpty() || isStalled() || now < quietUntil) return;
  turn = std::max(nextScan, turn + 1);
  nextScan = turn + static_cast<std::uint32_t>(protocol.getTask()->interval) + 1;
  sendScan(turn, now);
  if (!outbox.isEmpty()) return;
  quietUntil = now + (turns.endOf(turn + 1) - turns.endOf(turn));
}

void cSimWorker::sendScan(std::uint32_t number, cMoment now) {
  send(protocol.makeScan(number, turns.stampOf(number)), now);
}

void cSimWorker::send(cSimRecord record, cMoment now) {
  const bool dropped = isStalled() || outbox.getWaiting() > WAITING_MOST;
  if (dropped && record.running)
    log.skippedScans(1);
  else if (dropped)
    log.droppedAnswer();
  if (dropped || faults.take(eSimFault::NO_ANSWER, record)) return finish(record);

  cMoment earliest = now;
  if (setting.paced && record.scan) earliest = std::max(earliest, turns.endOf(*record.scan));
  if (const auto late = faults.take(eSimFault::LATE, record))
    earliest += std::chrono::milliseconds(std::max(*late, 0));
  damage.apply(record);
  if (record.bytes.empty())
    finish(record);
  else
    outbox.push(std::move(record), earliest);
}

void cSimWorker::pump(cMoment now) {
  blocked = false;
  while (!isStalled() && !blocked) {
    const std::size_t due = outbox.due(now);
    if (due == 0) break;
    const std::size_t count = line.say(outbox.front(), due, outbox.atRecordBegin());
    blocked = count < due;
    log.wrote(count);
    if (!outbox.sent(count, now)) continue;
    const cSimRecord record = outbox.take();
    log.ended(record);
    finish(record);
  }
  if (outbox.isEmpty()) protocol.allSaid();
}

void cSimWorker::finish(const cSimRecord& record) {
  if (!record.newSpeed) return;
  speed = *record.newSpeed;
  line.setSpeed(speed);
  outbox.setSpeed(setting.paced ? *record.newSpeed : 0);
}
