#include "bench/cReport.h"

#include <fmt/core.h>

#include <cerrno>
#include <fstream>
#include <iomanip>
#include <system_error>

using nlohmann::ordered_json;

namespace {

/// Where a row's figure goes; "a/b" is "b" within "a".
ordered_json& place(ordered_json& all, const std::string& key) {
  const std::size_t slash = key.find('/');
  if (slash == std::string::npos) return all[key];
  return all[key.substr(0, slash)][key.substr(slash + 1)];
}

}  // namespace

void cReport::addRow(const std::string& key, double figure, eGoal side, double goal) {
  const bool isMet = side == eGoal::AT_LEAST ? figure >= goal : figure <= goal;
  const char* const sign = side == eGoal::AT_LEAST ? ">=" : "<=";
  rows.push_back({key, figure, fmt::format("{} {:.4g}", sign, goal), !isMet, ""});
}

void cReport::addRow(const std::string& key, double figure) {
  rows.push_back({key, figure, "", false, ""});
}

void cReport::markShort(const std::string& key, const std::string& reason) {
  for (cRow& row : rows) {
    if (row.key != key) continue;
    row.isShort = true;
    row.reason = reason;
  }
}

void cReport::addReaderFigure(const std::string& reader, const std::string& quantity,
                              double figure) {
  readers[reader][quantity] = figure;
}

void cReport::note(const std::string& key, ordered_json value) { notes[key] = std::move(value); }

void cReport::print() const {
  fmt::print("{:<40} {:>9} {:>9}\n", "", "figure", "goal");
  for (const cRow& row : rows) {
    const char* const verdict = row.goal.empty() ? "" : row.isShort ? "short" : "ok";
    fmt::print("{:<40} {:>9.3f} {:>9}  {}  {}\n", row.key, row.figure, row.goal, verdict,
               row.reason);
  }
  printReaders();
}

void cReport::printReaders() const {
  if (readers.empty()) return;
  fmt::print("\n{:<28}", "");
  for (const auto& reader : readers.items()) fmt::print(" {:>15}", reader.key());
  for (const auto& quantity : readers.front().items()) {
    fmt::print("\n{:<28}", quantity.key());
    for (const auto& reader : readers) {
      fmt::print(" {:>15.1f}", reader.value(quantity.key(), 0.0));
    }
  }
  fmt::print("\n");
}

void cReport::write(const std::string& path) const {
  ordered_json all = ordered_json::object();
  ordered_json goals = ordered_json::object();
  for (const cRow& row : rows) {
    place(all, row.key) = row.figure;
    if (row.goal.empty()) continue;
    goals[row.key] = {{"goal", row.goal}, {"verdict", row.isShort ? "short" : "ok"}};
    if (!row.reason.empty()) goals[row.key]["reason"] = row.reason;
  }
  all["goals"] = goals;
  all["readers"] = readers;
  all.update(notes);
  std::ofstream file(path);
  file << std::setw(2) << all << std::endl;
  if (!file) throw std::system_error(errno, std::generic_category(), "cannot write " + path);
}
