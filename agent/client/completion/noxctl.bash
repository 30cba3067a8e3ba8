# Completion of noxctl for bash: noxctl itself knows what may come next.

_noxctl_complete() {
  local current=${COMP_WORDS[COMP_CWORD]} words=() prefix="" candidate i
  # bash makes a word of its own of the "=" in --option=VALUE, unless it is set up otherwise.
  for ((i = 1; i <= COMP_CWORD; ++i)); do
    if [[ ${COMP_WORDS[i]} == "=" && ${#words[@]} -gt 0 ]]; then
      words[-1]+="="
    elif [[ ${#words[@]} -gt 0 && ${words[-1]} == --*= ]]; then
      words[-1]+=${COMP_WORDS[i]}
    else
      words+=("${COMP_WORDS[i]}")
    fi
  done
  if [[ $current == "=" ]]; then
    current=""
  elif [[ $current == --*=* ]]; then
    prefix=${current%%=*}=
    current=${current#*=}
  fi

  COMPREPLY=()
  while IFS= read -r candidate; do
    case $candidate in
      :files)
        compopt -o filenames 2> /dev/null
        mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -f -- "$current")
        ;;
      :directories)
        compopt -o filenames 2> /dev/null
        mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -d -- "$current")
        ;;
      *) COMPREPLY+=("$candidate") ;;
    esac
  done < <("${COMP_WORDS[0]}" __complete "${words[@]}" 2> /dev/null)
  COMPREPLY=("${COMPREPLY[@]/#/$prefix}")
}

complete -F _noxctl_complete noxctl
