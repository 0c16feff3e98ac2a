#pragma once

#include <unistd.h>

#include <utility>

/// A file descriptor, closed by the destructor; -1: none.
class cDescriptor {
 public:
  explicit cDescriptor(int fd = -1) : fd(fd) {}
  cDescriptor(cDescriptor&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
  cDescriptor& operator=(cDescriptor other) noexcept {
    std::swap(fd, other.fd);
    return *this;
  }
  ~cDescriptor() { close(); }
  int get() const { return fd; }
  void close() {
    if (fd >= 0) ::close(fd);
    fd = -1;
  }

 private:
  int fd;
};
