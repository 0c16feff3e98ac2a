#include "tools/replaceFile.h"

#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "tools/cFileBeside.h"

namespace tool {

void checkReplaceable(const std::string& path) { const cFileBeside trial(path); }

void replaceFile(const std::string& path, const std::string& text) {
  cFileBeside file(path);
  for (std::string_view left = text; !left.empty();) {
    const ssize_t written = write(file.getDescriptor(), left.data(), left.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) failToWrite(path, errno);
    left.remove_prefix(static_cast<std::size_t>(written));
  }
  file.takePlace();
}

}  // namespace tool
