#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// On which side of its goal a figure should be.
enum class eGoal { AT_LEAST, AT_MOST };

/// The results of a run: rows with goals, a table of all readers, and the conditions of the run.
class cReport {
 public:
  /// Adds a figure and its goal under `key` ("a/b": "b" within "a").
  void addRow(const std::string& key, double figure, eGoal side, double goal);
  /// Adds a figure that has no goal.
  void addRow(const std::string& key, double figure);
  /// Marks a row as short whatever its figure is, and gives the reason.
  void markShort(const std::string& key, const std::string& reason);
  /// Adds one figure of one reader.
  void addReaderFigure(const std::string& reader, const std::string& quantity, double figure);
  /// Adds anything else that belongs in the file.
  void note(const std::string& key, nlohmann::ordered_json value);

  /// Prints the rows and the readers as tables on standard output.
  void print() const;
  /// Writes everything as JSON. Throws std::system_error when the file cannot be written.
  void write(const std::string& path) const;

 private:
  struct cRow {
    std::string key;
    double figure;
    std::string goal;  // as printed; "": none
    bool isShort;
    std::string reason;
  };

  void printReaders() const;

  std::vector<cRow> rows;
  nlohmann::ordered_json readers = nlohmann::ordered_json::object();
  nlohmann::ordered_json notes = nlohmann::ordered_json::object();
};
