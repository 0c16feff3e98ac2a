#!/bin/bash
# by_document.sh SOURCE FOLDER: builds README's host program in FOLDER as docs/install.md shows it, with CMake and
# without, and runs it on a simulated sensor. The environment says where the installation is.
set -euo pipefail
install=$1/docs/install.md folder=$2
rm -rf "$folder"
mkdir -p "$folder"
cp "$1/examples/ctrl_c.cpp" "$folder"
cd "$folder"

# A host goes on until it is interrupted.
run() {
  timeout --signal=INT 3 "$@" >output || true
  grep -q '^3: .* points' output
}

# The rest of a block, from the line that begins with $1.
block() { sed -n "/^$1/,/^\`\`\`/{/^\`\`\`/!p}" "$install"; }
block cmake_minimum_required >CMakeLists.txt
while read -r command; do
  case $command in
    *" &")  # it prints where the sensor is, once there is one for the next command
      coproc sensor { exec ${command% &}; }
      trap "kill $sensor_PID" EXIT
      read -r -t 60 _ <&"${sensor[0]}" ;;
    build/robot*) run ${command} ;;
    *) eval "$command" ;;
  esac
done < <(block 'cmake -B' | sed "s|/tmp/sensor|sensor|")

pkg-config --atleast-version=1.0 tarvoscan-1
alone=$(tr '\n' ' ' <"$install" | grep -oP '`\Kg\+\+ [^`]*')
# pkg-config quotes blanks in a path, for a shell that reads its words once more.
eval "eval \"${alone/g++/${CXX:-g++} ${CXXFLAGS:-}}\""
run ./a.out sensor
