#!/bin/bash
# pages.sh PROGRAM FOLDER: there is a page for the program and each of its subcommands, free of
# faults in its markup, and it has all the options.
set -euo pipefail
program=$1 folder=$2
for subcommand in '' $("$program" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p'); do
  page=$folder/tarvolink${subcommand:+-$subcommand}.1
  complaints=$(groff -man -ww -Tutf8 -z "$page" 2>&1)
  [ -z "$complaints" ] || { echo "$page: $complaints" >&2; exit 1; }
  shown=$(groff -man -Tascii -P-c -P-b -P-u "$page")
  grep -q "^tarvolink${subcommand:+-$subcommand} .- [a-z]" "$page" ||
    { echo "$page: its first section is no line of the index" >&2; exit 1; }
  for option in $("$program" $subcommand --help | grep -o -- '^  -[^ ]*'); do
    grep -q -- "^ *$option" <<<"$shown" || { echo "$page: nothing of $option" >&2; exit 1; }
  done
done
