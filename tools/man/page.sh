#!/bin/sh
# page.sh PROGRAM VERSION SUBCOMMAND INCLUDE OUTPUT: a man page of what PROGRAM says of itself by
# --help, with the sections of the file INCLUDE. SUBCOMMAND may be empty.
set -eu
program=$1 version=$2 subcommand=$3 include=$4 output=$5

# help2man names the page after the file that it runs.
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
command=$folder/tarvolink${subcommand:+-$subcommand}
printf '#!/bin/sh\nexec %s %s "$@"\n' "$program" "$subcommand" >"$command"
chmod +x "$command"

# "Take scans." is a sentence to the program's users, "take scans" a line of the index.
name=$("$command" --help | head -n 1 | sed 's/^./\L&/; s/\.$//')
help2man --no-info --name="$name" --version-string="$version" --include="$include" \
  --output="$output" "$command"

# help2man dates a page by its month's name, which mandoc cannot read.
date=$(date -u -d "@${SOURCE_DATE_EPOCH:-$(date +%s)}" +%F)
sed -i "/^\.TH /s/\"[A-Z][a-z]* [0-9]*\"/\"$date\"/" "$output"
