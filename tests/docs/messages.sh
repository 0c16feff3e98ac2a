#!/bin/bash
# messages.sh SOURCE: the guide's list of what the library writes is what its sources write.
set -uo pipefail
cd "$1" || exit

listed=$(sed -n '/^## What the library writes/,$s/^| `\([^`]*\)`.*/\1/p' docs/guide/driver/errors.md)
# A message up to the first value that is put into it; "parameters" is a stream that goes to std::cerr,
# and a condition chooses between the two about activation.
messages='(std::cerr|std::cout|parameters)\s*<<\s*"|(perror\(|fprintf\(stderr, |isActivated\(\) \? |(?<=activated)" : )"'
written=$(cat tarvolink/*/*.cpp | grep -oP "($messages)\K[^\"%\\\\]*" | grep -vx '\[')
# Blanks at the end of a line would not survive an editor.
same() { sed 's/ *$//' <<<"$1" | sort -u; }
diff <(same "$listed") <(same "$written") ||
  { echo "docs/guide/driver/errors.md lists other messages (<) than the sources write (>)." >&2; exit 1; }
(($(wc -l <<<"$listed") >= 20)) || { echo "The list was not found." >&2; exit 1; }
