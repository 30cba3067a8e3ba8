# Completion of noxctl for bash.

_noxctl_complete() {
  local commands="add list show delete enable disable attributes set-state status refresh notify
    watch check simulate next explain"
  local options="--socket --runtime-dir --json --help"
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command="" where=() i
  COMPREPLY=()

  for ((i = 1; i < COMP_CWORD; ++i)); do
    case ${COMP_WORDS[i]} in
      --socket | --runtime-dir) where+=("${COMP_WORDS[i]}" "${COMP_WORDS[++i]}") ;;
      --socket=* | --runtime-dir=*) where+=("${COMP_WORDS[i]}") ;;
      --id | --runs | --from | --to | --at | --zone | --count | -n | --gate-closed | --clock-step | \
        --run-time | --fail-at) ((++i)) ;;
      -*) ;;
      *) [[ -n $command ]] || command=${COMP_WORDS[i]} ;;
    esac
  done

  case $previous in
    --socket) mapfile -t COMPREPLY < <(compgen -f -- "$current") && return ;;
    --runtime-dir) mapfile -t COMPREPLY < <(compgen -d -- "$current") && return ;;
  esac

  case $command in
    "") options+=" --version" ;;
    add) options+=" --id --force" ;;
    watch) options+=" --runs" ;;
    simulate)
      options+=" --from --to --zone --gate-closed --clock-step --run-time --fail-at --calendar"
      ;;
    next) options+=" --count --from --zone" ;;
    explain) options+=" --at --zone" ;;
  esac
  if [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
    return
  fi

  case $command in
    "") mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current") ;;
    add | check | simulate) mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
    show | delete | enable | disable | attributes | set-state | watch)
      mapfile -t COMPREPLY < <(compgen -W \
        "$(noxctl "${where[@]}" list 2>/dev/null | awk 'NR > 1 { print $1 }')" -- "$current")
      ;;
    next | explain)
      mapfile -t COMPREPLY < <(compgen -f -W \
        "$(noxctl "${where[@]}" list 2>/dev/null | awk 'NR > 1 { print $1 }')" -- "$current")
      ;;
    notify) mapfile -t COMPREPLY < <(compgen -W "0 1 2 4 5 6 7 10" -- "$current") ;;
  esac
}

complete -o filenames -F _noxctl_complete noxctl
