#ifndef TARVOLINK_TOOLS_CINFOCOMMAND_H
#define TARVOLINK_TOOLS_CINFOCOMMAND_H

#include <string>

#include "tools/iCommand.h"

namespace tool {

/// `tarvolink info`: what a sensor tells of itself, as lines or as one JSON object.
class cInfoCommand : public iCommand {
 public:
  explicit cInfoCommand(CLI::App& app);

  void run() override;

 private:
  std::string device;
  bool json = false;
};

}  // namespace tool

#endif
