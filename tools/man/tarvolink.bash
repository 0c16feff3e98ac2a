# Completion of tarvolink's command line. The program itself tells its subcommands, options and the
# values that they take: by --help.

# The commands that the help on standard input lists.
_tarvolink_commands() { sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p'; }

_tarvolink() {
  local program=$1 word=$2 before=$3 subcommand= help i
  for ((i = 1; i < COMP_CWORD; i++)); do
    [[ ${COMP_WORDS[i]} == -* ]] || { subcommand=${COMP_WORDS[i]}; break; }
  done
  help=$("$program" $subcommand --help 2>/dev/null) || return 0

  local offers=
  if [[ $before == -* ]] && grep -q -- "^  \(-[a-z],\)\?$before [^ ]" <<<"$help"; then
    # The line of an option that takes a value: "--format ENUM:{csv,json,table}".
    offers=$(sed -n "s/^  $before [A-Z]*:{\(.*\)}.*/\1/p" <<<"$help" | tr ',' ' ')
    [[ $before != --fault ]] || offers=$("$program" sim --help | sed -n 's/^  \([a-z-]*\)=.*/\1/p')
  elif [[ $word == -* ]]; then
    offers=$(grep -o -- '^  -[^ ]*' <<<"$help" | tr ',' ' ')
  elif [[ -z $subcommand ]]; then
    offers=$(_tarvolink_commands <<<"$help")
  elif [[ $subcommand == help ]]; then
    offers=$("$program" --help | _tarvolink_commands)
  elif grep -q '^  DEVICE ' <<<"$help"; then
    offers="$("$program" list --json 2>/dev/null | sed -n 's/^ *"device": "\(.*\)",$/\1/p') sim:"
  fi
  mapfile -t COMPREPLY < <(compgen -W "$offers" -- "$word")
}

# Where nothing of this fits, the names of files do: a device has other names, and may be away.
complete -o default -F _tarvolink tarvolink
