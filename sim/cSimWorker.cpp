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

constexpr std::size_t MAX_WAITING = 1 << 20;  // bytes of answers to a host that does not read

// poll(2) on the master does not report the room that a host's tcflush makes, so a full pty is
// tried again at this interval.
constexpr auto FULL_PTY_RETRY = std::chrono::milliseconds(20);

int openEvent() {
  const int fd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (fd < 0) throwSimError("no descriptor available for waking the thread (eventfd)");
  return fd;
}

double rateOf(const cSimSetting& setting, const cSimModel& model) {
  return setting.rate > 0 ? setting.rate : model.rate();
}

/// Runs a function in a thread with all signals blocked, so that the handlers of the program that
/// holds the sensor run in that program's threads. A thread inherits the mask of its creator.
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

cSimWorker::cSimWorker(const cSimSetting& setting, const cSimModel& model, const cSimWorld& world,
                       cSimFaults& faults, cSimLog& log)
    : setting(setting),
      faults(faults),
      log(log),
      line(setting, setting.seed),
      link(setting.link, line.getPty().getPath()),
      event(openEvent()),
      protocol(setting, model, world),
      // Another seed than the line's, or garbage and damage would draw the same numbers.
      damage(faults, setting.seed + std::uint64_t(1)),
      outbox(faults),
      turns(cSimTurn::cClock::now(), rateOf(setting, model)),
      speed(setting.speed) {
  const bool scans = setting.scanningAtStart && setting.dialect != eSimDialect::SCIP1;
  if (scans && protocol.getTask() == nullptr)
    throwSimError("\"" + setting.commandAtStart + "\" is not an MD or MS that this model accepts",
                  EINVAL);
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

void cSimWorker::clearWakeUp() {
  std::uint64_t count = 0;
  while (read(event.get(), &count, sizeof count) > 0) {
  }
}

void cSimWorker::inject(const std::string& bytes) {
  {
    std::lock_guard<std::mutex> lock(mutex);
    injected.push_back(bytes);
  }
  wake();
}

// One round takes all that is due and never waits but in sleep. Commands come before the task, so
// that a QT stops the scan of its own round, and all rounds see one `now`.
void cSimWorker::run() {
  while (!stopping) {
    const cTimePoint now = cSimTurn::cClock::now();
    queueInjected(now);
    receive(now);
    runTask(now);
    transmit(now);
    sleep(now);
  }
}

std::optional<cSimWorker::cTimePoint> cSimWorker::nextWakeUp(cTimePoint now) const {
  // Stalled, only the turns of a running scan count on: they are skipped one by one. What waits in
  // the outbox is due already and would keep the thread awake.
  if (isStalled())
    return setting.paced && nextScan != 0 ? std::optional(turns.endOf(nextScan)) : std::nullopt;
  std::optional<cTimePoint> earliest;
  const auto add = [&](cTimePoint when) { earliest = std::min(earliest.value_or(when), when); };
  if (!outbox.isEmpty()) add(blocked ? now + FULL_PTY_RETRY : outbox.nextDue());
  if (nextScan != 0 && setting.paced) add(turns.endOf(nextScan));
  if (nextScan != 0 && !setting.paced && outbox.isEmpty()) add(quietUntil);
  return earliest;
}

void cSimWorker::sleep(cTimePoint now) {
  const short room = blocked && !isStalled() ? POLLOUT : 0;
  pollfd watched[] = {{line.getPty().getMaster(), static_cast<short>(POLLIN | room), 0},
                      {event.get(), POLLIN, 0}};
  // ppoll(2) and not poll: at 500000 bits/s a millisecond is 50 bytes.
  timespec timeout{};
  const auto when = nextWakeUp(now);
  if (when) {
    const auto left = std::max(*when - cSimTurn::cClock::now(), cSimOutbox::cDuration(0));
    timeout.tv_sec = static_cast<time_t>(left.count() / 1000000000);
    timeout.tv_nsec = static_cast<long>(left.count() % 1000000000);
  }
  if (ppoll(watched, 2, when ? &timeout : nullptr, nullptr) > 0 && watched[1].revents != 0)
    clearWakeUp();
}

void cSimWorker::queueInjected(cTimePoint now) {
  std::vector<std::string> bytes;
  {
    std::lock_guard<std::mutex> lock(mutex);
    bytes.swap(injected);
  }
  for (std::string& text : bytes) {
    cSimRecord record;
    record.bytes = std::move(text);
    if (!record.bytes.empty()) outbox.push(std::move(record), now);
  }
}

void cSimWorker::receive(cTimePoint now) {
  const std::string bytes = line.receive();
  if (bytes.empty()) return;
  log.addReceived(bytes.size());
  for (char byte : bytes) {
    const auto command = protocol.receive(byte);
    if (command) answer(*command, now);
  }
}

// Unpaced there is no real time: the clock stands at the newest turn whose scan was sent, and a GD
// or GS gets the turn after it, so that no number is sent twice.
cSimClock cSimWorker::clockAt(cTimePoint now) const {
  const std::uint32_t ended = getTurn(now);
  cSimClock clock;
  clock.stamp = setting.paced ? turns.stampAt(now) : turns.stampOf(turn);
  // Paced, a G takes the turn under way and waits for its end: the next G may come before that.
  clock.nextScan = std::max(ended, turn) + 1;
  clock.lastScan = setting.paced ? ended : clock.nextScan;
  clock.lastStamp = turns.stampOf(clock.lastScan);
  return clock;
}

void cSimWorker::answer(const cSimCommand& command, cTimePoint now) {
  if (!command.text.empty()) {
    log.addCommand(command.text);
    if (setting.onCommand) setting.onCommand(command.text);
  }
  cSimRecord record = protocol.answer(command, clockAt(now));
  // These apply whatever a fault makes of the answer; a new line speed waits until it was sent.
  if (record.newRate) turns.setRate(*record.newRate, now);
  if (record.starts) nextScan = getTurn(now) + 1;
  if (record.scan) turn = *record.scan;
  if (!record.bytes.empty()) queue(std::move(record), now);
}

void cSimWorker::runTask(cTimePoint now) {
  scanning = protocol.getTask() != nullptr;
  if (!scanning)
    nextScan = 0;
  else if (nextScan == 0)  // a task that runs from the start: no answer has begun it
    nextScan = getTurn(now) + 1;
  if (nextScan == 0) return;
  if (setting.paced)
    scanPaced(now);
  else
    scanUnpaced(now);
}

// Sends the newest scan that is due, or none while an older one is still being sent, as a sensor
// does that has one buffer: a host that reads slowly gets whole scans with gaps in between.
void cSimWorker::scanPaced(cTimePoint now) {
  const std::uint32_t newest = turns.endedAt(now);
  if (nextScan > newest) return;
  const auto every = static_cast<std::uint32_t>(protocol.getTask()->interval) + 1;
  const std::uint32_t missed = (newest - nextScan) / every;
  const std::uint32_t number = nextScan + missed * every;
  const bool busy = outbox.hasRunningScan();
  if (missed > 0 || busy) log.addSkippedScans(missed + (busy ? 1 : 0));
  nextScan = number + every;
  if (!busy) queueScan(number, now);
}

void cSimWorker::scanUnpaced(cTimePoint now) {
  if (!outbox.isEmpty() || isStalled() || now < quietUntil) return;
  turn = std::max(nextScan, turn + 1);
  nextScan = turn + static_cast<std::uint32_t>(protocol.getTask()->interval) + 1;
  queueScan(turn, now);
  if (!outbox.isEmpty()) return;
  // A fault left nothing to send. Without a pause scans would be made and dropped in a busy loop.
  quietUntil = now + (turns.endOf(turn + 1) - turns.endOf(turn));
}

void cSimWorker::queueScan(std::uint32_t number, cTimePoint now) {
  queue(protocol.makeScan(number, turns.stampOf(number)), now);
}

// A record that is dropped or emptied still changes the line speed, since its command was obeyed.
void cSimWorker::queue(cSimRecord record, cTimePoint now) {
  const bool dropped = isStalled() || outbox.countWaiting() > MAX_WAITING;
  if (dropped && record.running)
    log.addSkippedScans(1);
  else if (dropped)
    log.addDroppedAnswer();
  if (dropped || faults.consume(eSimFault::NO_ANSWER, record)) return applyNewSpeed(record);

  cTimePoint earliest = now;
  if (setting.paced && record.scan) earliest = std::max(earliest, turns.endOf(*record.scan));
  if (const auto late = faults.consume(eSimFault::LATE, record))
    earliest += std::chrono::milliseconds(std::max(*late, 0));
  damage.apply(record);
  if (record.bytes.empty())
    applyNewSpeed(record);
  else
    outbox.push(std::move(record), earliest);
}

void cSimWorker::transmit(cTimePoint now) {
  blocked = false;
  while (!isStalled() && !blocked) {
    const std::size_t due = outbox.countDue(now);
    if (due == 0) break;
    const std::size_t count = line.send(outbox.data(), due, outbox.isAtRecordStart());
    blocked = count < due;
    log.addWritten(count);
    if (!outbox.markSent(count, now)) continue;
    const cSimRecord record = outbox.pop();
    log.addRecord(record);
    applyNewSpeed(record);
  }
  if (outbox.isEmpty()) protocol.allSent();
}

void cSimWorker::applyNewSpeed(const cSimRecord& record) {
  if (!record.newSpeed) return;
  speed = *record.newSpeed;
  line.setSpeed(speed);
  outbox.setSpeed(setting.paced ? speed.load() : 0);
}
