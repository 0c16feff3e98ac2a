#pragma once

#include <istream>

#include "tarvolink/export.h"
#include "tarvolink/port/basic_portbuf.h"

namespace kavTBX {

template <typename CharT>
class basic_portstream;

/// A standard stream over a `basic_portbuf`. One caller at a time, as with the buffer.
template <>
class TARVOLINK_API basic_portstream<char> : public std::basic_iostream<char> {
 public:
  /// A stream over `buffer`, which must outlive it unless `owns`: then the stream deletes it.
  explicit basic_portstream(basic_portbuf<char>* buffer, bool owns = false);
  ~basic_portstream() override;

 private:
  basic_portbuf<char>* buffer;
  bool owns;
};

}  // namespace kavTBX
