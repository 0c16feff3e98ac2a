#pragma once

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <list>
#include <string>
#include <vector>

#include "tarvolink/base/cBSync.h"
#include "tarvolink/base/cMessQueue.h"
#include "tarvolink/base/cThread.h"
#include "tarvolink/export.h"
#include "tarvolink/scip/cTarvoLink.h"
#include "tarvolink/scip2/cSCIP2RecordListener.h"

/// The conversation with a SCIP 2.0 sensor: the thread that alone writes and reads the port.
///
/// One pass of the worker: take a request off the queue (asleep on it while nothing is
/// expected), give it a listener and a tag, write its line, wake its caller; then, while any
/// listener expects records, receive one and hand it to the listener whose tag it
/// bears. A read under way ends by the port's read time-out; so long may a request wait.
///
/// Stopping: the request with an empty command. However the worker ends, it closes the queue
/// and wakes every request left in it with no listener; requests posted later come back
/// so at once. The destructor stops and joins before any member goes.
///
/// Any thread, for every operation not marked otherwise, once `run` has been called; before that a
/// request waits for it.
class TARVOLINK_API cSCIP2Comm : public kavTBX::cThread {
 public:
  /// One request. Lives with its caller until `done`; the worker touches it no more after
  /// raising that.
  struct cReqType {
    std::string command;                       ///< without tag and line end; empty: stop
    int count = 0;                             ///< records expected, see the listener
    cSCIP2RecordListener* listener = nullptr;  ///< collects the answers
    kavTBX::cBSync done;                       ///< raised once the line is written
    bool claims = false;                       ///< the caller gets the listener to itself
    bool givesUp = false;                      ///< no command: expect nothing any more
    /// A resumed request stands in the queue twice and keeps itself until both are served.
    boost::shared_ptr<cReqType> self;
    std::atomic<int> entries{0};  ///< how often such a one still stands there
  };

  /// A conversation over `link`; the thread does not run yet.
  explicit cSCIP2Comm(boost::shared_ptr<cTarvoLink> link);
  ~cSCIP2Comm() override;

  /// Sends `command` with a tag; blocks until its line is written. The result collects
  /// `count` records (below 0: without end) and may serve another request as soon as it has
  /// them; it lives as long as this object unless `claimRequest` is used as well. Null when the
  /// thread has ended.
  cSCIP2RecordListener* sendRequest(std::string command, int count);

  /// The same, but the listener is the caller's alone until `release` or the end of what
  /// `keep` gives; then it may cease to be. See `cSCIP2Claim`.
  cSCIP2RecordListener* claimRequest(std::string command, int count);

  /// Sends `command` twice, each with a tag of its own, to be answered in `listener`, which
  /// expects one record then. Blocks until the first line is written. The result is
  /// `listener`; it gets no answer when the thread has ended.
  cSCIP2RecordListener* resumeRequest(cSCIP2RecordListener* listener, std::string command);

  /// `listener->waitRecord(timeout)`, milliseconds; empty for no listener.
  boost::shared_ptr<cSCIPRecord> waitRecord(cSCIP2RecordListener* listener, int timeout);

  /// Waits up to `timeout` milliseconds on the listener that expects records for `tag`; empty if
  /// there is none or none came.
  boost::shared_ptr<cSCIPRecord> waitRecord(int tag, int timeout);

  /// The caller took its record or gave up: `listener` may serve another request, once it is
  /// complete.
  void release(cSCIP2RecordListener* listener);

  /// The caller took a late answer: `listener`, still to be released, serves no other request.
  void retire(cSCIP2RecordListener* listener);

  /// Shares `listener` with the caller of `claimRequest`; when the last copy of the result
  /// goes, it is emptied and expects nothing more. The result must not outlive this object.
  boost::shared_ptr<cSCIP2RecordListener> keep(cSCIP2RecordListener* listener);

  /// Gives up every unanswered request; when it returns, the thread sleeps on its queue and
  /// reads nothing until the next request.
  void giveUp();

  /// Lets go of the link. Only after `giveUp`, and with no request ever after. One caller at a
  /// time.
  void releaseLink();

  /// Whether `line` ends in the sum of what stands before it: ((bytes added up) AND 0x3F) +
  /// 0x30. Edits `line` in place, whatever the result: a line feed at its end goes, then,
  /// unless the line is shorter than 3 characters, the sum and, with `hasSemicolon`, a ";"
  /// before it. Throws std::out_of_range for an empty line. Any thread.
  static bool validateLine(std::string& line, bool hasSemicolon);

 protected:
  void threadInit() override;
  void threadFunc() override;
  void threadFinReq() override;

 private:
  cSCIP2RecordListener* post(cReqType& request);
  void interruptReads(bool on);
  bool servePass();
  cReqType* takeRequest();
  void serve(cReqType& request);
  void assignListener(cReqType& request);
  void send(cReqType& request);
  void receive();
  bool receive(cSCIPRecord& record);
  void offer(boost::shared_ptr<cSCIPRecord> record);
  void forgetAll();
  void pause();
  void closeQueue();
  static void wake(cReqType* request);
  bool expectsRecords();
  void recycle(cSCIP2RecordListener* listener);
  void setFree(std::list<cSCIP2RecordListener*>::iterator place);
  void disownRetired(cSCIP2RecordListener* listener);
  void forget(std::list<cSCIP2RecordListener*>::iterator place);
  void boundAbandoned();
  bool isActive(cSCIP2RecordListener* listener) const;
  boost::shared_ptr<cSCIP2RecordListener> getOwner(cSCIP2RecordListener* listener);
  boost::shared_ptr<cSCIP2RecordListener> findOwner(const cSCIP2RecordListener* listener) const;

  kavTBX::cMessQueue<cReqType*> queue;
  boost::shared_ptr<cTarvoLink> link;
  bool finished = false;
  int nextTag = 1;          // worker only
  boost::mutex listsMutex;  // guards all below; taken before a listener's own
  std::list<cSCIP2RecordListener*> activeListeners;  // expect records, in the order sent
  std::list<cSCIP2RecordListener*> freeListeners;    // complete, for reuse
  std::vector<boost::shared_ptr<cSCIP2RecordListener>> listeners;  // owns them all
};
