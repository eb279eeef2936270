# bash completion for tarvik: options, the letters of -types, files.

_tarvik() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=''
  ((COMP_CWORD > 0)) && previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()

  # Options end at the first argument that is none.
  local word i
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${COMP_WORDS[i]}
    case $word in
      -lsize | -types)
        if ((i + 1 == COMP_CWORD)); then
          _tarvik_value "$previous" "$current"
          return
        fi
        ((++i))
        ;;
      -*) ;;
      *) return ;;
    esac
  done

  if [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '-lsize -sta -types -v -vv' -- "$current")
  else
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
}

# The argument of an option: a usual record length, or one more letter of the record types.
_tarvik_value() {
  local option=$1 current=$2
  if [[ $option == -lsize ]]; then
    mapfile -t COMPREPLY < <(compgen -W '256 512 1024 2048 4096 8192 16384 32768' -- "$current")
    return
  fi
  local letter
  for letter in V A S T D R Q M; do
    [[ $current == *$letter* ]] || COMPREPLY+=("$current$letter")
  done
  compopt -o nospace -o nosort 2>/dev/null
}

complete -F _tarvik tarvik
