#include "tarvoscan/search/cSensorFinder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

namespace tarvo {

namespace {

using std::chrono::milliseconds;
using cClock = cScanPort::cClock;

// How long a look waits, by round: short first, since it is what a wrong speed costs. Sensors have
// been seen to take 250 ms.
constexpr milliseconds PATIENCE[cSensorFinder::ROUNDS] = {milliseconds(200), milliseconds(300),
                                                          milliseconds(400)};
// Where bytes arrive, the echo may be behind the record of a stream.
constexpr milliseconds PATIENCE_WITH_BYTES{300};

// What is asked in each; sensors answer different commands in turn.
const std::vector<std::string> QUESTIONS[cSensorFinder::ROUNDS] = {
    {"QT"}, {"QT", "VV", "V"}, {"QT", "VV", "V"}};

constexpr milliseconds ANSWER_TIMEOUT{400};
constexpr int TRIES = 3;

constexpr int WIDE_PROTOCOL = 4;  // three characters a distance in SCIP 1.x
constexpr int WIDE_MAX =
    0x3FFFF;  // what three characters can say: such a sensor does not report more

/// Reads a line, up to a length that no status or echo of a question has; false when the time is
/// over.
bool readLine(cScanPort& port, cClock::time_point deadline, std::string& line) {
  constexpr std::size_t MAX_LINE = 64;
  line.clear();
  while (cClock::now() < deadline) {
    const int c = port.sbumpc();
    if (c == '\n') return true;
    if (c >= 0 && line.size() < MAX_LINE) line += static_cast<char>(c);
    if (c >= 0) continue;
    if (port.getEnd() != cScanPort::eEnd::SILENCE) return false;
    port.beginRecord(deadline, deadline, false);
  }
  return false;
}

int toNumber(std::string_view text) { return std::atoi(std::string(text).c_str()); }

/// Where the value of a key goes.
struct cField {
  const char* key;
  std::string* text;
  int* number;
};

void store(const std::vector<cField>& fields, std::string_view line) {
  constexpr std::size_t KEY_SIZE = 4;
  if (line.size() <= KEY_SIZE) return;
  const std::string_view value = line.substr(KEY_SIZE + 1);
  for (const cField& field : fields) {
    if (line.substr(0, KEY_SIZE) != field.key) continue;
    if (field.text != nullptr) *field.text = value;
    if (field.number != nullptr) *field.number = toNumber(value);
  }
}

/// Takes ";" and the sum off a line "KEY:value;X". Some sensors add a remark ("<-Default setting by
/// user") that they leave out of the sum.
bool stripInformation(std::string_view& line) {
  if (line.empty()) return false;
  const char sum = line.back();
  line.remove_suffix(1);
  if (!line.empty() && line.back() == ';') line.remove_suffix(1);
  if (cSCIP2Comm::getSum(line) == sum) return true;
  line = line.substr(0, line.find("<-"));
  return cSCIP2Comm::getSum(line) == sum;
}

std::vector<cField> fieldsOf(eInformation kind, cSensorInfo& info) {
  switch (kind) {
    case eInformation::PARAMETERS:
      return {{"DMIN", nullptr, &info.minDistance},   {"DMAX", nullptr, &info.maxDistance},
              {"ARES", nullptr, &info.stepsPerTurn},  {"AMIN", nullptr, &info.firstStep},
              {"AMAX", nullptr, &info.lastStep},      {"AFRT", nullptr, &info.frontStep},
              {"SCAN", nullptr, &info.turnsPerMinute}};
    case eInformation::IDENTITY:
      return {{"VEND", &info.vendor, nullptr},
              {"PROD", &info.product, nullptr},
              {"FIRM", &info.firmware, nullptr},
              {"PROT", &info.protocol, nullptr},
              {"SERI", &info.serial, nullptr}};
    case eInformation::STATUS:
      break;
  }
  return {{"STAT", &info.status, nullptr}};
}

cAnswer fetch(cConversation& talk, eInformation kind, cSensorInfo& info) {
  cAnswer answer;
  for (int i = 0; i < TRIES; ++i) {
    answer = talk.ask(commandFor(kind, talk.isScip2()), ANSWER_TIMEOUT);
    if (answer && !readInformation(kind, talk.isScip2(), answer.body, info)) {
      answer.kind = eAnswer::DAMAGED;
    }
    if (answer.kind != eAnswer::SILENCE && answer.kind != eAnswer::DAMAGED) break;
  }
  return answer;
}

/// What all SCIP 1.x sensors have, since none reports it; the driver knows it.
void assumeScip1Parameters(cConversation& talk, cSensorInfo& info) {
  const cSensorDriverSCIP1 usual(boost::shared_ptr<cTarvoLink>(new cTarvoLink(
      boost::shared_ptr<kavTBX::basic_portbuf<char>>(&talk.getPort(), [](void*) {}))));
  info.firstStep = usual.getMinSpot();
  info.lastStep = usual.getMaxSpot();
  info.frontStep = usual.getFrontSpot();
  info.stepsPerTurn = usual.getNumSpot();
  info.minDistance = usual.getMinDist();
  info.maxDistance = isWideScip1(info) ? WIDE_MAX : usual.getMaxDist();
}

/// Whether they make sense: a sensor may report anything, and scans are computed from them.
bool arePlausible(const cSensorInfo& info) {
  constexpr int MAX_STEPS = 10000;  // four digits of a command
  return info.stepsPerTurn > 0 && info.stepsPerTurn <= MAX_STEPS && info.firstStep >= 0 &&
         info.firstStep < info.lastStep && info.lastStep < MAX_STEPS && info.frontStep >= 0 &&
         info.frontStep < MAX_STEPS && info.minDistance >= 0 &&
         info.maxDistance > info.minDistance && info.turnsPerMinute >= 0;
}

}  // namespace

bool isWideScip1(const cSensorInfo& info) {
  return info.dialect == eDialect::SCIP1 &&
         info.protocol.rfind(cSensorDriverManager::protoId[WIDE_PROTOCOL], 0) == 0;
}

cSensorFinder::cSensorFinder(cConversation& conversation) : talk(conversation) {}

bool cSensorFinder::search(const std::vector<int>& lineSpeeds) {
  for (int round = 0; round < ROUNDS; ++round) {
    for (const int lineSpeed : lineSpeeds) {
      if (look(lineSpeed, round)) return true;
      const cScanPort::eEnd end = talk.getPort().getEnd();
      if (end == cScanPort::eEnd::STOPPED || end == cScanPort::eEnd::GONE) return false;
    }
  }
  return false;
}

bool cSensorFinder::look(int lineSpeed, int round) {
  cScanPort& port = talk.getPort();
  dialect = eDialect::UNKNOWN;
  if (!port.setSpeed(lineSpeed)) return false;
  std::string text = cTarvoLink::SEND_EOL;
  for (const std::string& question : QUESTIONS[round]) text += question + cTarvoLink::SEND_EOL;
  if (!port.send(text, PATIENCE[round])) return false;
  if (!awaitVerdict(QUESTIONS[round], PATIENCE[round])) return false;
  talk.setScip2(dialect == eDialect::SCIP2);
  if (QUESTIONS[round].size() > 1) talk.expectLeftovers();
  return true;
}

/// Reads lines until one is the echo of a question and the next its status.
bool cSensorFinder::awaitVerdict(const std::vector<std::string>& questions, milliseconds patience) {
  cScanPort& port = talk.getPort();
  const auto begin = cClock::now();
  auto deadline = begin + patience;
  port.beginRecord(deadline, deadline, false);
  bool isEchoed = false;
  for (std::string line; readLine(port, deadline, line);) {
    if (isEchoed && readVerdict(line)) return true;
    isEchoed = std::find(questions.begin(), questions.end(), line) != questions.end();
    deadline = begin + std::max(patience, PATIENCE_WITH_BYTES);
  }
  return false;
}

bool cSensorFinder::readVerdict(const std::string& status) {
  std::string_view line = status;
  if (line.size() == 1 && line[0] >= '0' && line[0] <= '9') {
    dialect = eDialect::SCIP1;
  } else if (line.size() == 3 && stripSum(line)) {
    dialect = eDialect::SCIP2;
  }
  return dialect != eDialect::UNKNOWN;
}

bool cSensorFinder::identify(cSensorInfo& info, cProblem& problem) {
  info.device = talk.getPort().getDevice();
  info.lineSpeed = talk.getPort().getSpeed();
  if (dialect == eDialect::SCIP1) switchToScip2();
  info.dialect = dialect;
  cAnswer answer;
  if (talk.isScip2()) answer = fetch(talk, eInformation::PARAMETERS, info);
  if (answer.kind == eAnswer::REFUSED) {
    // It is in a mode that knows few commands: adjusting its clock, most likely.
    talk.ask("TM2", ANSWER_TIMEOUT);
    answer = fetch(talk, eInformation::PARAMETERS, info);
  }
  fetch(talk, eInformation::IDENTITY, info);
  if (talk.isScip2()) fetch(talk, eInformation::STATUS, info);
  if (!talk.isScip2()) assumeScip1Parameters(talk, info);
  if (arePlausible(info)) return true;
  problem = {
      eProblem::SENSOR_REFUSES,
      fmt::format("the sensor on {} answers, but its parameters (PP) {}.", info.device,
                  answer ? "make no sense" : "are not to be read: the command " + toText(answer)),
      "Without them its scans have no angles. Switch it off and on."};
  return false;
}

void cSensorFinder::switchToScip2() {
  if (!talk.ask("SCIP2.0", ANSWER_TIMEOUT)) return;
  dialect = eDialect::SCIP2_SWITCHED;
  talk.setScip2(true);
}

const std::vector<int>& usualSpeeds() { return cSensorDriverManager::getSearchSpeeds(); }

const char* commandFor(eInformation kind, bool isScip2) {
  switch (kind) {
    case eInformation::PARAMETERS:
      return "PP";
    case eInformation::IDENTITY:
      return isScip2 ? "VV" : "V";
    case eInformation::STATUS:
      break;
  }
  return "II";
}

bool readInformation(eInformation kind, bool isScip2, const std::string& body, cSensorInfo& info) {
  const auto fields = fieldsOf(kind, info);
  std::string_view rest = body;
  std::string_view line;
  while (nextLine(rest, line)) {
    if (isScip2 && !stripInformation(line)) return false;
    if (!isScip2 && !line.empty() && line.back() == ';') line.remove_suffix(1);
    store(fields, line);
  }
  return true;
}

}  // namespace tarvo
