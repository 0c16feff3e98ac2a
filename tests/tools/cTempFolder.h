#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

/// A folder of a test's own, gone with it.
class cTempFolder {
 public:
  cTempFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "tarvolink-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp failed: " + name);
    path = name;
  }
  cTempFolder(const cTempFolder&) = delete;
  cTempFolder& operator=(const cTempFolder&) = delete;
  ~cTempFolder() { std::filesystem::remove_all(path); }

  /// The path of `name` in the folder.
  std::string operator/(const std::string& name) const { return path + "/" + name; }

 private:
  std::string path;
};

inline std::string readFile(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}
