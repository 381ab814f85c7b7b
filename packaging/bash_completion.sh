#!/usr/bin/env bash
# Bash completion for zyngrad, made from the help texts of its commands.
#   bash_completion.sh ZYNGRAD > zyngrad.bash
set -euo pipefail
zyngrad=$1

commands() { "$zyngrad" --help | awk '/^Subcommands:/ {inside = 1; next} inside && NF == 0 {inside = 0} inside && /^  [a-z]/ {print $1}'; }

# Reads the help of a command. Prints one line per option: its names, and the values that its text lists as
# "  value: what it means".
options() {
  awk '
    function finish() { if (names != "") print names "\t" values; names = values = "" }
    /^  -/ { finish(); names = $1; gsub(",", " ", names); next }
    NF == 0 { finish() }
    names != "" && /^ +[a-z0-9]+:/ { value = $1; sub(":$", "", value); values = values " " value }
    END { finish() }'
}

cat <<END
# bash completion for zyngrad

_zyngrad() {
  local current=\${COMP_WORDS[COMP_CWORD]} previous=\${COMP_WORDS[COMP_CWORD-1]} words=""
  if ((COMP_CWORD == 1)); then
    COMPREPLY=(\$(compgen -W "$(commands | tr '\n' ' ')--help --version" -- "\$current"))
    return
  fi
  case "\${COMP_WORDS[1]} \$previous" in
END
for command in $(commands); do
  "$zyngrad" "$command" --help | options | while IFS=$'\t' read -r names values; do
    [[ -n "${values// /}" ]] || continue
    pattern=""
    for name in $names; do pattern+="${pattern:+|}'$command $name'"; done
    printf "    %s) words=\"%s\" ;;\n" "$pattern" "${values# }"
  done
done
cat <<'END'
  esac
  if [[ -z $words && $current == -* ]]; then
    case "${COMP_WORDS[1]}" in
END
for command in $(commands); do
  names=$("$zyngrad" "$command" --help | options | cut -f1 | tr '\n' ' ')
  printf '      %s) words="%s" ;;\n' "$command" "${names% }"
done
cat <<'END'
    esac
  fi
  # Everything else is a file or a free value.
  if [[ -n $words ]]; then COMPREPLY=($(compgen -W "$words" -- "$current")); else COMPREPLY=(); fi
}
complete -o default -F _zyngrad zyngrad
END
