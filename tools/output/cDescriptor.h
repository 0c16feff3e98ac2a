#pragma once

#include <unistd.h>

namespace tool {

/// A file descriptor that is closed with this; -1: none.
class cDescriptor {
 public:
  explicit cDescriptor(int opened) : fd(opened) {}
  cDescriptor(const cDescriptor&) = delete;
  cDescriptor& operator=(const cDescriptor&) = delete;
  ~cDescriptor() {
    if (fd >= 0) close(fd);
  }

  int get() const { return fd; }

 private:
  const int fd;
};

}  // namespace tool
