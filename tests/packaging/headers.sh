#!/bin/bash
# The installed headers as a host of that C++ standard includes them; no warning is let pass.
set -euo pipefail
standard=$1 folder=$2
exec "$CXX" $CXXFLAGS -std=c++"$standard" -Wall -Wextra -Wpedantic -Werror -fsyntax-only \
  -I "$folder" -include tarvolink/tarvolink.h -include tarvoscan/tarvoscan.h -x c++ /dev/null
