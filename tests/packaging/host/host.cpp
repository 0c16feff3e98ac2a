// A host program as somebody else's project has it: it derives from one of the library's classes,
// catches what the library throws, and casts from one type to another across the border.
#include <tarvolink/tarvolink.h>

#include <iostream>
#include <stdexcept>
#include <string>

namespace {

bool throwsAcross() {
  std::string line;
  try {
    cSCIP2Comm::validateLine(line, false);
  } catch (const std::out_of_range&) {
    return true;
  }
  return false;
}

class cIdler : public kavTBX::cThread {
  void threadInit() override {}
  void threadFunc() override {}
  void threadFinReq() override {}
};

bool castsAcross() {
  cIdler idler;
  kavTBX::cThread* thread = &idler;
  return dynamic_cast<cIdler*>(thread) != nullptr;
}

}  // namespace

int main() {
  const bool isRefused = !cSensorDriverManager::create("/dev/null");  // no terminal, no search
  if (!isRefused || !throwsAcross() || !castsAcross()) return 1;
  std::cout << "a host of tarvolink\n";
}
