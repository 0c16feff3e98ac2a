#include "tools/writeAtomically.h"

#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "tools/cAtomicFile.h"

namespace tool {

void checkWritable(const std::string& path) { const cAtomicFile trial(path); }

void writeAtomically(const std::string& path, const std::string& text) {
  cAtomicFile file(path);
  for (std::string_view left = text; !left.empty();) {
    const ssize_t written = write(file.getDescriptor(), left.data(), left.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throwWriteError(path, errno);
    left.remove_prefix(static_cast<std::size_t>(written));
  }
  file.commit();
}

}  // namespace tool
