#pragma once

#include <CLI/CLI.hpp>

#include "tools/base/cShutdown.h"

namespace tool {

/// One subcommand: its constructor declares name and options, `run` does the work.
class iCommand {
 public:
  virtual ~iCommand() = default;

  /// True when the command line asked for this one; valid after parsing.
  bool isChosen() const { return declaration->parsed(); }

  /// Does the work, until `stop` is requested at the latest. Throws `cFailure` for what the user
  /// must know.
  virtual void run(cShutdown& stop) = 0;

 protected:
  explicit iCommand(CLI::App* subcommand) : declaration(subcommand) {}

  CLI::App* const declaration;  ///< owned by the application that it was added to
};

}  // namespace tool
