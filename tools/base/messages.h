#pragma once

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

/// Says `text` to the user, a line on standard error, in place of the status line if there is one.
/// A reader who takes nothing (a full pipe, Ctrl-S) is waited for a second at most, and then it is
/// lost. Any thread.
void printError(const std::string& text);

/// The same, but not with `-q`.
void printNote(const std::string& text);

/// The same, but only with `-v`; it waits for nobody.
void printDetail(const std::string& text);

/// Shows `text` below the cursor of the terminal that standard error is, until the next message;
/// "": takes it away. Waits for nobody. Any thread.
void showBelow(const std::string& text);

}  // namespace tool
