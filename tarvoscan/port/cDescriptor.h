#pragma once

#include <unistd.h>

#include <utility>

namespace tarvo {

/// A file descriptor that is closed with this; -1: none.
class cDescriptor {
 public:
  explicit cDescriptor(int fd = -1) : fd(fd) {}
  cDescriptor(cDescriptor&& other) noexcept : fd(other.release()) {}
  cDescriptor& operator=(cDescriptor&& other) noexcept {
    std::swap(fd, other.fd);
    return *this;
  }
  cDescriptor(const cDescriptor&) = delete;
  cDescriptor& operator=(const cDescriptor&) = delete;
  ~cDescriptor() {
    if (fd >= 0) close(fd);
  }

  int get() const { return fd; }

  /// Gives it to the caller.
  int release() { return std::exchange(fd, -1); }

 private:
  int fd;
};

}  // namespace tarvo
