#pragma once

#include <string>

/// A symlink that lives as long as the object.
class cSimLink {
 public:
  /// Makes the symlink `path` point at `target`; replaces an older symlink of that name in one
  /// step. Does nothing if the path is empty. Throws std::system_error, also when the path is
  /// another kind of file, which is left alone.
  cSimLink(const std::string& path, const std::string& target);
  /// Removes the link if it still points at the target: another sensor may have taken it over.
  ~cSimLink();
  cSimLink(const cSimLink&) = delete;
  cSimLink& operator=(const cSimLink&) = delete;

 private:
  std::string path;
  std::string target;
};
