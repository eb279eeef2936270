#!/bin/bash
# What the completions offer on the command line of tarvik.
#
#   completion_test.sh bash FILE
#   completion_test.sh zsh FILE      ends with 77, the tests' "skipped", where zsh is not there
set -eu

shell=$1
file=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failed=0

touch "$scratch/alpha.seed" "$scratch/with blank.seed"
mkdir "$scratch/archive"
cd "$scratch"

# offers WANT WORD...: the candidates for the last word, sorted and separated by commas.
offers() {
  local want=$1 got
  shift
  got=$("complete_$shell" "$@" | LC_ALL=C sort | paste -sd, -)
  [[ $got == "$want" ]] && return
  echo "tarvik $*: expected '$want', got '$got'"
  failed=1
}

complete_bash() {
  # shellcheck disable=SC1090 # the file is an argument
  (
    source "$file"
    COMP_WORDS=(tarvik "$@")
    COMP_CWORD=$#
    COMPREPLY=()
    [[ $(complete -p tarvik) == *' -F _tarvik tarvik' ]] && _tarvik
    ((${#COMPREPLY[@]} == 0)) || printf '%s\n' "${COMPREPLY[@]}"
  )
}

# A zsh in a terminal of its own types the words and a tab; its compadd writes down what it is given.
complete_zsh() {
  : >"$scratch/found"
  zsh -f "$scratch/type.zsh" "tarvik ${*// /\\ }" >/dev/null
  # As they are called, not as they are typed.
  tr -d '\\' <"$scratch/found"
}

cat >"$scratch/setup.zsh" <<END
fpath=('$(dirname "$file")' \$fpath)
autoload -Uz compinit
compinit -u -d '$scratch/dump'
compadd() {
  # Calls that only ask which words match.
  if [[ \${@[1,(i)(-|--)]} == *-(O|A|D)\ * ]]; then
    builtin compadd "\$@"
    return
  fi
  local -a found
  builtin compadd -O found "\$@"
  (( \$#found == 0 )) || print -rl -- "\$IPREFIX"\${^found} >>'$scratch/found'
  builtin compadd "\$@"
}
leave() { exit }
comppostfuncs=(leave)
bindkey '^I' complete-word
zle-line-init() { : >'$scratch/ready' }
zle -N zle-line-init
END
cat >"$scratch/type.zsh" <<END
zmodload zsh/zpty zsh/zselect
zpty inner zsh -f -i
zpty -w inner "source '$scratch/setup.zsh'"
repeat 500; do
  [[ -e '$scratch/ready' ]] && break
  zselect -t 1
done
rm -f '$scratch/ready'
zpty -w -n inner "\$1"\$'\\t'
while zpty -r inner line; do :; done
END

test_options() {
  offers '-lsize,-sta,-types,-v,-vv' -
  offers '-types' -t
  offers '-v,-vv' -v
  offers '-types' -sta -lsize 512 -t
}
test_types() {
  offers 'A,D,M,Q,R,S,T,V' -types ''
  offers 'VA,VD,VM,VQ,VR,VS,VT' -types V
  offers 'DVA,DVM,DVQ,DVR,DVS,DVT' -types DV
  offers '' -types VASTDRQM
}
test_sizes() {
  offers '4096' -lsize 40
}
test_files() {
  offers 'alpha.seed,archive' a
  offers 'alpha.seed,archive' -v -lsize 512 -types VA a
  offers 'with blank.seed' w
  offers '' alpha.seed -
}

if ! command -v "$shell" >/dev/null; then exit 77; fi
test_options
test_types
test_sizes
test_files
exit "$failed"
