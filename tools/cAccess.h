#pragma once

#include <sys/stat.h>

#include <string>

namespace tool {

/// Who may open a device, as stat(2) and access(2) tell.
class cAccess {
 public:
  /// Looks at `path`, which stays closed. One that is missing has neither owner nor group.
  explicit cAccess(const std::string& path);

  /// The names, or the numbers of those without.
  const std::string& getOwner() const { return owner; }
  const std::string& getGroup() const { return group; }

  /// True when this process may open it for reading and writing.
  bool mayOpen() const { return permitted; }

  /// What somebody who may not has to do.
  std::string getCure() const;

 private:
  bool isGroupEnough() const;

  const std::string device;
  struct stat status {};
  std::string owner;
  std::string group;
  bool permitted = false;
};

}  // namespace tool
