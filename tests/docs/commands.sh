#!/bin/bash
# commands.sh SOURCE FOLDER: what the documents point to is there, their code is in examples/ or here, and
# so built and run, and their commands and the man page's work: the program's (it is in FOLDER) with a
# simulated sensor, in a folder of their own, and with an end. The others: tests/packaging/by_document.sh
# builds the host program, packaging/in_packages.sh installs
# and removes, script/check and continuous integration run script/* and CONTRIBUTING's presets.
set -uo pipefail
cd "$1" || exit
export PATH=$2:$PATH TARVOLINK_DEVICES= links=0 blocks=0 failed=0
documents=(README.md CONTRIBUTING.md $(find docs -name '*.md'))
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT

fail() {
  echo "$*" >&2
  failed=1
}

# Runs until it is stopped.
run_sim() {
  coproc { exec $1 2>&1; }
  read -r -t 60 -u "${COPROC[0]}" && kill -TERM "$COPROC_PID" && wait "$COPROC_PID"
}

try() {
  case $1 in
    script/*) [ -x "${1%% *}" ] && grep -q "${1%% *}" script/check .ci/run packaging/in_*.sh ;;
    "tarvolink sim "*) run_sim "$1" ;;
    *) (cd "$folder" && eval "$1" >/dev/null) ;;
  esac
}

for document in "${documents[@]}"; do
  for target in $(grep -oP '[^[]\]\(\K[^)#:]+(?=[)#])' "$document"); do
    [ -e "$(dirname "$document")/$target" ] || fail "$document: $target"
    links=$((links + 1))
  done
done

# Without indentation, so that a block may be shown from within a list or a function.
code=$(sed 's/^ *//' examples/*.cpp examples/*/*.cpp tests/docs/*.cpp)
while read -r -d $'\1' block; do
  [[ $code == *"$block"* ]] || fail "no example has: $block"
  blocks=$((blocks + 1))
done < <(sed 's/^ *//' "${documents[@]}" |
  awk '/^```/ { if (inside) print "\1"; inside = !inside && /cpp$/; next } inside')

# In a block a line is a command up to two blanks, after which stands what it does.
mapfile -t commands < <({ awk '/```/ { inside = !inside } inside' "${documents[@]}"
  sed -n 's/\\-/-/g; s/^\.B tarvolink /tarvolink /p' tools/man/tarvolink.h2m; } |
  sed -nE -e 's/^ *(tarvolink |script\/)/\1/; T; s/  .*//' \
    -e "s|/dev/ttyACM0|sim:|; s/-n 0/-n 3/; s/view sim:/& --once/; s|/tmp/sensor|$folder/sensor|; s/ &$//; p")
for command in "${commands[@]}"; do
  try "$command" || fail "failed: $command"
done

((links >= 20 && blocks >= 10 && ${#commands[@]} >= 12)) ||
  fail "only $links links, $blocks blocks of code and ${#commands[@]} commands were found"
exit $failed
