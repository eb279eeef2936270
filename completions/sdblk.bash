# bash completion for sdblk: verbs, their options and the arguments of these, files.

_sdblk() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=''
  ((COMP_CWORD > 0)) && previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()

  if ((COMP_CWORD == 1)); then
    local words='blocks volumes stations segments stationxml'
    [[ $current == -* ]] && words='--help --version'
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    return
  fi
  local options='--files-from -0 -j -o --record-length --schema --help --version'
  case ${COMP_WORDS[1]} in
    blocks) options+=' --raw --types --blockettes' ;;
    volumes) options+=' --csv --known' ;;
    stations) options+=' --csv --accept --reject --from --to' ;;
    segments) options+=' --csv' ;;
    stationxml)
      options='--files-from -0 -o --record-length --help --version'
      options+=' --accept --reject --from --to --level --strict'
      ;;
    *) return ;;
  esac

  case $previous in
    -j) mapfile -t COMPREPLY < <(compgen -W '0 1 2 4 8' -- "$current") ;;
    --record-length)
      mapfile -t COMPREPLY < <(compgen -W '64 128 256 512 1024 2048 4096 8192 16384 32768 65536 131072' -- "$current")
      ;;
    --level) mapfile -t COMPREPLY < <(compgen -W 'network station channel response' -- "$current") ;;
    --types) _sdblk_types "$current" ;;
    --blockettes | --accept | --reject | --from | --to) ;;
    *)
      if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
      else
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
      fi
      ;;
  esac
}

# One more letter of the record types.
_sdblk_types() {
  local letter
  for letter in V A S T D R Q M; do
    [[ $1 == *$letter* ]] || COMPREPLY+=("$1$letter")
  done
  compopt -o nospace -o nosort 2>/dev/null
}

complete -F _sdblk sdblk
