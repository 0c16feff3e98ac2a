#include "tarvolink/port/basic_portstream.h"

namespace kavTBX {

basic_portstream<char>::basic_portstream(basic_portbuf<char>* buffer, bool owns)
    : std::basic_iostream<char>(buffer), buffer(buffer), owns(owns) {}

basic_portstream<char>::~basic_portstream() {
  if (owns) delete buffer;
  buffer = nullptr;
}

}  // namespace kavTBX
