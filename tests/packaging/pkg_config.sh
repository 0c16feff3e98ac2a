#!/bin/bash
# Builds the host with no more than pkg-config tells of the moved installation, and runs it.
set -euo pipefail
libraries=$1 program=$2
export PKG_CONFIG_PATH=$libraries/pkgconfig
pkg-config --atleast-version=2.0 tarvolink-2.0
read -ra flags <<<"$(pkg-config --cflags tarvolink-2.0)"
read -ra links <<<"$(pkg-config --libs tarvolink-2.0)"
"$CXX" $CXXFLAGS "${flags[@]}" -Wall -Wextra -Wpedantic -Werror -o "$program" \
  "${BASH_SOURCE[0]%/*}/host/host.cpp" "${links[@]}"
LD_LIBRARY_PATH=$libraries "$program"
