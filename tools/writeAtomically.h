#pragma once

#include <string>

namespace tool {

/// Throws `cFailure` when `writeAtomically` could not do its work at `path`: what is there is no
/// regular file, or its folder takes none. Leaves everything as it was.
void checkWritable(const std::string& path);

/// Makes `text` the content of `path` in one step (rename(2)): a reader finds the older file or
/// the new one, never a part. An older file keeps its permissions, a symbolic link its place.
/// Throws `cFailure` when it cannot be written; the older file is as it was then.
void writeAtomically(const std::string& path, const std::string& text);

}  // namespace tool
