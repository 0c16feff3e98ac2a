#!/bin/bash
# What the completion offers on the way to a command line, asked as bash asks it.
set -uo pipefail
program=$1 failed=0
export TARVOLINK_DEVICES=/dev/null
. "$2"

# offers EXPECTED WORD...: the last word is the one under the cursor.
offers() {
  local expected=$1
  shift
  COMP_WORDS=(tarvolink "$@") COMP_CWORD=$# COMPREPLY=()
  _tarvolink "$program" "${!#}" "${COMP_WORDS[COMP_CWORD - 1]}"
  [ "${COMPREPLY[*]}" = "$expected" ] && return
  echo "after 'tarvolink $*': offered '${COMPREPLY[*]}', expected '$expected'" >&2
  failed=1
}

offers 'list info scan view stop sim help' ''
offers 'scan stop sim' s
offers '--fault --first --format' scan --f
offers 'csv json table' scan --format ''
offers 'scip1 scip1-switch' sim --dialect scip1
offers 'wrong-sum wrong-count' scan --fault wrong
offers '460800' scan /dev/ttyACM0 --speed 46
offers '' scan -o ''         # a file: bash offers them itself
offers '/dev/null sim:' scan ''
offers '' scan /dev/serial/  # a device's other name
exit $failed
