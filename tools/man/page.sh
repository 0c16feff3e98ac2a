#!/bin/bash
# page.sh VERSION SUBCOMMAND INCLUDE OUTPUT PROGRAM...: a man page of what PROGRAM (which may begin by
# an emulator) says of itself by --help, with the sections of the file INCLUDE. SUBCOMMAND may be empty.
set -euo pipefail
version=$1 subcommand=$2 include=$3 output=$4
program=("${@:5}")

# help2man names the page after the file that it runs.
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
command=$folder/tarvolink${subcommand:+-$subcommand}
printf '#!/bin/bash\nexec %s %s "$@"\n' "${program[*]@Q}" "$subcommand" >"$command"
chmod +x "$command"

# "Take scans." is a sentence to the program's users, "take scans" a line of the index.
name=$("$command" --help | head -n 1 | sed 's/^./\L&/; s/\.$//')
help2man --no-info --name="$name" --version-string="$version" --include="$include" \
  --output="$output" "$command"

# help2man dates a page by its month's name, which mandoc cannot read.
date=$(date -u -d "@${SOURCE_DATE_EPOCH:-$(date +%s)}" +%F)
sed -i "/^\.TH /s/\"[A-Z][a-z]* [0-9]*\"/\"$date\"/" "$output"
