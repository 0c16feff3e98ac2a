#include "tarvolink/port/basic_portstream.h"

namespace kavTBX {

basic_portstream<char>::basic_portstream(basic_portbuf<char>* portbuf, bool ownsBuffer)
    : std::basic_iostream<char>(portbuf), buffer(portbuf), owns(ownsBuffer) {}

basic_portstream<char>::~basic_portstream() {
  if (owns) delete buffer;
  buffer = nullptr;
}

}  // namespace kavTBX
