#!/bin/bash
# What is installed is what tarvolink.h and tarvoscan.h reach, and each header compiles alone. One that a source
# of its own name includes first has been compiled so by the build; that it does is looked at here.
set -euo pipefail
folder=$1 source=$2
cd "$folder"

reached=$(for header in tarvolink/tarvolink.h tarvoscan/tarvoscan.h; do
  "$CXX" $CXXFLAGS -std=c++17 -M -I . $header
done | grep -o 'tarvo\(link\|scan\)/[a-z0-9/]*[A-Za-z0-9_]*\.h' | sort -u)
installed=$(find tarvolink tarvoscan -name '*.h' | sort -u)
diff <(echo "$reached") <(echo "$installed") ||
  { echo "The headers that are reached (<) are not those installed (>)." >&2; exit 1; }

for header in $installed; do
  own=$source/${header%.h}.cpp
  if [ -e "$own" ]; then
    [ "$(grep -m 1 '^#include' "$own")" = "#include \"$header\"" ] ||
      { echo "${own##*/} does not include its own header first." >&2; exit 1; }
  else
    "$CXX" $CXXFLAGS -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I . -x c++ \
      -include "$header" /dev/null
  fi
done
