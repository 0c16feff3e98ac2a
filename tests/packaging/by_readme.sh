#!/bin/bash
# by_readme.sh SOURCE FOLDER: builds README's host program in FOLDER by README's CMakeLists.txt and
# commands, and by its one line without CMake, and runs it on a simulated sensor. Where the library
# and the program are to be found is left to the environment.
set -euo pipefail
readme=$1/README.md folder=$2
rm -rf "$folder"
mkdir -p "$folder"
cp "$1/examples/first_scan.cpp" "$folder"
cd "$folder"

# block FENCE TEXT: the block of README, opened by FENCE, that holds TEXT.
block() {
  FENCE=$1 TEXT=$2 awk '/^```/ { if (held) exit; text = ""; open = $0 == ENVIRON["FENCE"]; next }
    open { text = text $0 "\n"; if (index($0, ENVIRON["TEXT"])) held = 1 }
    END { printf "%s", text; exit !held }' "$readme"
}
block '```cmake' 'project(robot' >CMakeLists.txt
commands=$(block '```' 'build/robot' | sed "s|/tmp/sensor|$folder/sensor|")
alone=$(tr '\n' ' ' <"$readme" | grep -oP '`\Kg\+\+ [^`]*')

while read -r command; do
  echo "$ $command"
  case $command in
    *" &")  # it tells where the sensor is; who reads that before the next command does not race it
      coproc sensor { exec ${command% &}; }
      pid=$sensor_PID
      trap 'kill $pid' EXIT
      read -r -t 60 _ <&"${sensor[0]}" ;;
    *) eval "$command" ;;
  esac
done <<<"$commands"

echo "$ $alone"
pkg-config --atleast-version=2.0 tarvolink-2.0
eval "${alone/g++/${CXX:-g++} ${CXXFLAGS:-}}"
./a.out sensor
