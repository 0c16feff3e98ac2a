#include "tarvolink/scip2/cSCIP2Comm.h"

#include <algorithm>
#include <boost/chrono.hpp>
#include <boost/make_shared.hpp>
#include <limits>
#include <stdexcept>
#include <string_view>

#include "tarvolink/scip/cSCIPError.h"
#include "tarvolink/scip2/checksum.h"

namespace {

// Between two reads of a hung-up port: far below 1 % of a core.
constexpr boost::chrono::milliseconds DEAD_PORT_PAUSE(100);

// A command that is never answered leaves its listener active. Beyond this many the oldest is given
// up: otherwise a mute sensor would cost more memory, and a longer search, with each command.
constexpr int MAX_ABANDONED = 256;

/// Makes the worker's receive end between two reads for its lifetime: on a line that never falls
/// silent it might not end otherwise.
class cReadsInterrupted {
 public:
  explicit cReadsInterrupted(const boost::shared_ptr<cTarvoLink>& link) : link(link) { set(true); }
  ~cReadsInterrupted() { set(false); }
  cReadsInterrupted(const cReadsInterrupted&) = delete;
  cReadsInterrupted& operator=(const cReadsInterrupted&) = delete;

 private:
  void set(bool on) {
    if (link) link->portbuf->interruptReads(on);
  }

  const boost::shared_ptr<cTarvoLink>& link;
};

}  // namespace

cSCIP2Comm::cSCIP2Comm(boost::shared_ptr<cTarvoLink> link) : link(link) {}

cSCIP2Comm::~cSCIP2Comm() { finalize(); }

void cSCIP2Comm::threadInit() { finished = false; }

void cSCIP2Comm::threadFunc() {
  try {
    while (servePass()) {
    }
  } catch (...) {
    // Out of memory, or a stream that the host made throw: callers notice by a closed queue.
  }
  setFinishing();
  closeQueue();
}

void cSCIP2Comm::threadFinReq() {
  setFinishing();                   // a later run must not start a thread that nothing could wake
  if (!wasStarted()) closeQueue();  // there is no worker to do it, and callers may be waiting
  const cReadsInterrupted silenced(link);
  cReqType stop;
  if (queue.postIfOpen(&stop)) stop.done.wait();
  finished = true;
}

// --- callers ---------------------------------------------------------------------------

cSCIP2RecordListener* cSCIP2Comm::sendRequest(std::string command, int count) {
  cReqType request;
  request.command = command;
  request.count = count;
  return post(request);
}

cSCIP2RecordListener* cSCIP2Comm::claimRequest(std::string command, int count) {
  cReqType request;
  request.command = command;
  request.count = count;
  request.claims = true;
  return post(request);
}

cSCIP2RecordListener* cSCIP2Comm::post(cReqType& request) {
  if (!queue.postIfOpen(&request)) return nullptr;
  request.done.wait_and_reset();
  return request.listener;
}

cSCIP2RecordListener* cSCIP2Comm::resumeRequest(cSCIP2RecordListener* listener,
                                                std::string command) {
  // Not on this stack: the second entry is served after this call has returned.
  const auto request = boost::make_shared<cReqType>();
  request->command = command;
  request->listener = listener;
  request->self = request;
  request->entries = 2;
  // A resume is defined as two lines on the wire; the listener ends up with the second one's tag.
  int entry = 0;
  try {
    for (; entry < 2; ++entry) {
      if (!queue.postIfOpen(request.get())) wake(request.get());
    }
  } catch (...) {
    // Or the request would wait for entries that nobody serves, and keep itself alive for ever.
    for (; entry < 2; ++entry) wake(request.get());
    throw;
  }
  request->done.wait_and_reset();
  return listener;
}

boost::shared_ptr<cSCIPRecord> cSCIP2Comm::waitRecord(cSCIP2RecordListener* listener, int timeout) {
  return listener ? listener->waitRecord(timeout) : boost::shared_ptr<cSCIPRecord>();
}

boost::shared_ptr<cSCIPRecord> cSCIP2Comm::waitRecord(int tag, int timeout) {
  // Owned while waiting: no lock is held then, and another caller may release it.
  boost::shared_ptr<cSCIP2RecordListener> found;
  {
    boost::mutex::scoped_lock guard(listsMutex);
    const auto place =
        std::find_if(activeListeners.begin(), activeListeners.end(),
                     [tag](const cSCIP2RecordListener* listener) { return listener->tag == tag; });
    if (place != activeListeners.end()) found = findOwner(*place);
  }
  return found ? found->waitRecord(timeout) : boost::shared_ptr<cSCIPRecord>();
}

void cSCIP2Comm::release(cSCIP2RecordListener* listener) {
  boost::mutex::scoped_lock guard(listsMutex);
  listener->claimed = false;
  listener->abandoned = isActive(listener);
  if (listener->abandoned) {
    boundAbandoned();
  } else {
    eraseIfWithdrawn(listener);
  }
}

void cSCIP2Comm::withdraw(cSCIP2RecordListener* listener) {
  boost::mutex::scoped_lock guard(listsMutex);
  listener->withdrawn = true;
}

boost::shared_ptr<cSCIP2RecordListener> cSCIP2Comm::detach(cSCIP2RecordListener* listener) {
  const boost::shared_ptr<cSCIP2RecordListener> owner = getOwner(listener);
  // Not a copy of `owner`: when the last copy goes, the listener must become free.
  return boost::shared_ptr<cSCIP2RecordListener>(
      listener, [this, owner](cSCIP2RecordListener* kept) { recycle(kept); });
}

void cSCIP2Comm::recycle(cSCIP2RecordListener* listener) {
  boost::mutex::scoped_lock guard(listsMutex);
  listener->claimed = false;
  listener->clear();
  const auto place = std::find(activeListeners.begin(), activeListeners.end(), listener);
  if (place != activeListeners.end()) setFree(place);
  eraseIfWithdrawn(listener);
}

void cSCIP2Comm::giveUp() {
  const cReadsInterrupted silenced(link);
  cReqType request;
  request.givesUp = true;
  post(request);
}

void cSCIP2Comm::releaseLink() { link.reset(); }

bool cSCIP2Comm::validateLine(std::string& line, bool hasSemicolon) {
  if (!line.empty() && line.back() == '\n') line.pop_back();
  std::string_view summed = line;
  const bool isValid = stripChecksum(summed, hasSemicolon);
  line.resize(summed.size());
  return isValid;
}

char cSCIP2Comm::getSum(std::string_view text) { return checksumOf(text); }

// --- worker ----------------------------------------------------------------------------

/// One pass; false once the thread is to end.
bool cSCIP2Comm::servePass() {
  if (isFinishing()) return false;
  if (cReqType* request = takeRequest()) {
    if (request->givesUp) {
      forgetAll();
      wake(request);
      return true;
    }
    if (request->command.empty()) {
      setFinishing();
      closeQueue();
      wake(request);
      return false;
    }
    serve(*request);
  }
  if (expectsRecords()) receive();
  return true;
}

/// The next request; waits for one unless records are expected. Null: there is none.
cSCIP2Comm::cReqType* cSCIP2Comm::takeRequest() {
  const bool waits = !expectsRecords();
  boost::this_thread::disable_interruption uninterrupted;
  boost::mutex::scoped_lock guard(queue.mutex);
  while (queue.queue.empty()) {
    if (!waits) return nullptr;
    queue.cond.wait(guard);
  }
  cReqType* const request = queue.queue.front();
  queue.queue.pop_front();
  return request;
}

void cSCIP2Comm::serve(cReqType& request) {
  try {
    if (request.listener == nullptr) assignListener(request);
    send(request);
  } catch (...) {
    // Null tells the caller that the thread has ended; a resumed request returns its own listener.
    if (!request.self) request.listener = nullptr;
    wake(&request);
    throw;
  }
  wake(&request);
}

void cSCIP2Comm::assignListener(cReqType& request) {
  boost::mutex::scoped_lock guard(listsMutex);
  const auto place = std::find_if(
      freeListeners.begin(), freeListeners.end(),
      [](const cSCIP2RecordListener* listener) { return !listener->busy && !listener->claimed; });
  if (place != freeListeners.end()) {
    activeListeners.splice(activeListeners.end(), freeListeners, place);
  } else {
    const auto made = boost::make_shared<cSCIP2RecordListener>();
    listeners.push_back(made);  // first: no active listener may be left without an owner
    activeListeners.push_back(made.get());
  }
  request.listener = activeListeners.back();
  request.listener->claimed = request.claims;
}

void cSCIP2Comm::send(cReqType& request) {
  {
    boost::mutex::scoped_lock guard(listsMutex);
    request.listener->resetResponse(request.command, nextTag, request.count);
  }
  // One insertion is one write(2): a line in pieces may reach the sensor with a pause in it.
  *link->stream << request.command + ";" + std::to_string(nextTag) + cTarvoLink::SEND_EOL;
  nextTag = nextTag == std::numeric_limits<int>::max() ? 1 : nextTag + 1;
}

void cSCIP2Comm::receive() {
  const auto record = boost::make_shared<cSCIPRecord>();
  if (!receive(*record)) {
    if (link->portbuf->isExhausted()) pause();
    return;
  }
  // An empty status line has no checksum to test.
  if (record->status.empty() || !validateLine(record->status, false)) {
    record->error = cSCIPError::EINVALID_STATUS;
  }
  offer(record);
}

/// Receives into `record` and copies it to the link, whose lock is not held while waiting.
bool cSCIP2Comm::receive(cSCIPRecord& record) {
  // What a receive leaves alone: the latest SCIP 1.x command, and the time until an echo comes.
  record.command = link->record.command;
  record.time = link->record.time;
  const bool isComplete = link->recvRecord(record);
  boost::mutex::scoped_lock guard(link->mutex);
  link->record = record;
  return isComplete;
}

void cSCIP2Comm::offer(boost::shared_ptr<cSCIPRecord> record) {
  boost::mutex::scoped_lock guard(listsMutex);
  const auto taker =
      std::find_if(activeListeners.begin(), activeListeners.end(),
                   [&record](cSCIP2RecordListener* listener) { return listener->push(record); });
  if (taker == activeListeners.end() || !(*taker)->isComplete()) return;
  cSCIP2RecordListener* const complete = *taker;
  setFree(taker);
  eraseIfWithdrawn(complete);
}

/// Moves an active listener to the end of the free ones. Allocates nothing, since the destructor of
/// a scan's listener calls it.
void cSCIP2Comm::setFree(std::list<cSCIP2RecordListener*>::iterator place) {
  (*place)->abandoned = false;
  freeListeners.splice(freeListeners.end(), activeListeners, place);
}

/// Destroys a free listener if it is withdrawn and no caller holds it.
void cSCIP2Comm::eraseIfWithdrawn(cSCIP2RecordListener* listener) {
  if (!listener->withdrawn || listener->claimed) return;
  freeListeners.remove(listener);
  listeners.erase(std::find(listeners.begin(), listeners.end(), findOwner(listener)));
}

boost::shared_ptr<cSCIP2RecordListener> cSCIP2Comm::getOwner(cSCIP2RecordListener* listener) {
  boost::mutex::scoped_lock guard(listsMutex);
  return findOwner(listener);
}

boost::shared_ptr<cSCIP2RecordListener> cSCIP2Comm::findOwner(
    const cSCIP2RecordListener* listener) const {
  return *std::find_if(listeners.begin(), listeners.end(),
                       [listener](const boost::shared_ptr<cSCIP2RecordListener>& owner) {
                         return owner.get() == listener;
                       });
}

bool cSCIP2Comm::isActive(cSCIP2RecordListener* listener) const {
  return std::find(activeListeners.begin(), activeListeners.end(), listener) !=
         activeListeners.end();
}

bool cSCIP2Comm::expectsRecords() {
  boost::mutex::scoped_lock guard(listsMutex);
  return !activeListeners.empty();
}

void cSCIP2Comm::boundAbandoned() {
  const auto isAbandoned = [](const cSCIP2RecordListener* listener) { return listener->abandoned; };
  if (std::count_if(activeListeners.begin(), activeListeners.end(), isAbandoned) <= MAX_ABANDONED) {
    return;
  }
  const auto oldest = std::find_if(activeListeners.begin(), activeListeners.end(), isAbandoned);
  forget(oldest);
}

void cSCIP2Comm::forgetAll() {
  boost::mutex::scoped_lock guard(listsMutex);
  while (!activeListeners.empty()) forget(activeListeners.begin());
}

/// Gives up an active listener's request.
void cSCIP2Comm::forget(std::list<cSCIP2RecordListener*>::iterator place) {
  cSCIP2RecordListener* const forgotten = *place;
  forgotten->clear();
  setFree(place);
  eraseIfWithdrawn(forgotten);
}

/// Sleeps until the next look at a hung-up port, whose reads return at once, or a new request.
void cSCIP2Comm::pause() {
  boost::this_thread::disable_interruption uninterrupted;
  boost::mutex::scoped_lock guard(queue.mutex);
  if (queue.queue.empty()) queue.cond.wait_for(guard, DEAD_PORT_PAUSE);
}

void cSCIP2Comm::closeQueue() {
  queue.close([](cReqType* request) { wake(request); });
}

/// Ends one entry of `request`. Its caller may return, and an ordinary request cease to exist, as
/// soon as `done` is raised; a resumed one must outlive that call, whichever entry comes last.
void cSCIP2Comm::wake(cReqType* request) {
  const boost::shared_ptr<cReqType> alive = request->self;
  if (alive && --request->entries == 0) request->self.reset();
  request->done.unblock();
}
