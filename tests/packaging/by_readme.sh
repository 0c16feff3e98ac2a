#!/bin/bash
# by_readme.sh SOURCE FOLDER: builds README's host program in FOLDER as README shows it, with CMake and
# without, and runs it on a simulated sensor. Where all is to be found the environment tells.
set -euo pipefail
readme=$1/README.md folder=$2
rm -rf "$folder"
mkdir -p "$folder"
cp "$1/examples/first_scan.cpp" "$folder"
cd "$folder"

# The rest of a block, from the line that begins with $1.
block() { sed -n "/^$1/,/^\`\`\`/{/^\`\`\`/!p}" "$readme"; }
block cmake_minimum_required >CMakeLists.txt
while read -r command; do
  case $command in
    *" &")  # it tells where the sensor is: only then there is one for the next command
      coproc sensor { exec ${command% &}; }
      trap "kill $sensor_PID" EXIT
      read -r -t 60 _ <&"${sensor[0]}" ;;
    *) eval "$command" ;;
  esac
done < <(block 'cmake -B' | sed "s|/tmp/sensor|sensor|")

pkg-config --atleast-version=2.0 tarvolink-2.0
alone=$(tr '\n' ' ' <"$readme" | grep -oP '`\Kg\+\+ [^`]*')
# pkg-config quotes blanks in a path, for a shell that reads its words once more.
eval "eval \"${alone/g++/${CXX:-g++} ${CXXFLAGS:-}}\""
./a.out sensor
