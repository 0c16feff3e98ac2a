#pragma once

#include <string>

/// A symlink that lives as long as the object.
class cSimLink {
 public:
  /// Makes `link` point at `target`, in one step; an older symlink of that name is replaced. Does
  /// nothing for an empty link. Throws std::system_error, also when another kind of file is there.
  cSimLink(const std::string& link, const std::string& target);
  /// Removes the link if it still points at the target.
  ~cSimLink();
  cSimLink(const cSimLink&) = delete;
  cSimLink& operator=(const cSimLink&) = delete;

 private:
  std::string path;
  std::string aim;
};
