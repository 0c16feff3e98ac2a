#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// Which side of its goal a figure should be on.
enum class eGoal { AT_LEAST, AT_MOST };

/// What a run found: rows with a goal, a table of all readers, and how it was run.
class cReport {
 public:
  /// A figure and its goal under `key` ("a/b": "b" within "a").
  void addRow(const std::string& key, double figure, eGoal side, double goal);
  /// A figure that has no goal.
  void addRow(const std::string& key, double figure);
  /// Makes a row fall short whatever its figure is, with the reason.
  void refute(const std::string& key, const std::string& reason);
  /// One figure of one reader.
  void addReaderFigure(const std::string& reader, const std::string& quantity, double figure);
  /// Anything else that belongs into the file.
  void note(const std::string& key, nlohmann::ordered_json value);

  /// The rows and the readers as tables, to standard output.
  void print() const;
  /// Everything as JSON. Throws std::system_error when the file cannot be written.
  void write(const std::string& path) const;

 private:
  struct cRow {
    std::string key;
    double figure;
    std::string goal;  // as it is printed; "": none
    bool isShort;
    std::string reason;
  };

  void printReaders() const;

  std::vector<cRow> rows;
  nlohmann::ordered_json readers = nlohmann::ordered_json::object();
  nlohmann::ordered_json notes = nlohmann::ordered_json::object();
};
