// A host program of another project: it derives from one of the library's classes,
// and calls what is in the library.
#include <tarvolink/tarvolink.h>

#include <iostream>

class cIdler : public kavTBX::cThread {
  void threadInit() override {}
  void threadFunc() override {}
  void threadFinReq() override {}
};

int main() {
  cIdler idler;
  kavTBX::cThread* const thread = &idler;
  const bool isRefused = !cSensorDriverManager::create("/dev/null");  // no terminal, no search
  if (!isRefused || dynamic_cast<cIdler*>(thread) == nullptr) return 1;
  std::cout << "a host of tarvolink\n";
}
