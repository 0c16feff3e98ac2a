#pragma once

#include <cstdio>
#include <string>

namespace tool {

/// How much the program says on standard error.
enum class eVerbosity {
  ERRORS,  ///< `-q`: why it fails
  NOTES,   ///< and what it does
  DETAILS  ///< `-v`: and what goes over the line
};

/// That of this run. Set before the first other thread.
inline eVerbosity verbosity = eVerbosity::NOTES;

/// Says `text` to the user, a line on standard error. Nothing fails when nobody reads it. Any
/// thread.
inline void printError(const std::string& text) {
  std::fprintf(stderr, "tarvolink: %s\n", text.c_str());
}

/// The same, but not with `-q`.
inline void printNote(const std::string& text) {
  if (verbosity >= eVerbosity::NOTES) printError(text);
}

/// The same, but only with `-v`.
inline void printDetail(const std::string& text) {
  if (verbosity >= eVerbosity::DETAILS) printError(text);
}

}  // namespace tool
