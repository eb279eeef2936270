#!/bin/bash
# What the completions offer on the command line of the program that a file is named after.
#
#   completion_test.sh bash FILE
#   completion_test.sh zsh FILE      ends with 77, the tests' "skipped", where zsh is not there
set -eu

shell=$1
file=$2
program=$(basename "$file" .bash)
program=${program#_}
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
  echo "$program $*: expected '$want', got '$got'"
  failed=1
}

complete_bash() {
  # shellcheck disable=SC1090 # the file is an argument
  (
    source "$file"
    COMP_WORDS=("$program" "$@")
    COMP_CWORD=$#
    COMPREPLY=()
    [[ $(complete -p "$program") == *" -F _$program $program" ]] && "_$program"
    ((${#COMPREPLY[@]} == 0)) || printf '%s\n' "${COMPREPLY[@]}"
  )
}

# A zsh in a terminal of its own types the words and a tab; its compadd writes down what it is given.
complete_zsh() {
  : >"$scratch/found"
  zsh -f "$scratch/type.zsh" "$program ${*// /\\ }" >/dev/null
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

test_tarvik() {
  offers '-lsize,-sta,-types,-v,-vv' -
  offers '-types' -t
  offers '-v,-vv' -v
  offers '-types' -sta -lsize 512 -t
  offers 'A,D,M,Q,R,S,T,V' -types ''
  offers 'VA,VD,VM,VQ,VR,VS,VT' -types V
  offers 'DVA,DVM,DVQ,DVR,DVS,DVT' -types DV
  offers '' -types VASTDRQM
  offers '4096' -lsize 40
  offers 'alpha.seed,archive' a
  offers 'alpha.seed,archive' -v -lsize 512 -types VA a
  offers 'with blank.seed' w
  offers '' alpha.seed -
}

test_sdblk() {
  offers 'blocks,segments,stations,stationxml,volumes' ''
  offers 'segments,stations,stationxml' s
  offers 'channel,network,response,station' stationxml --level ''
  offers '' stationxml -j
  offers '--strict' stationxml --s
  offers '--help,--version' --
  offers '--raw,--record-length' blocks --r
  offers '--record-length' volumes --r
  offers '--known' volumes --k
  offers '--csv' segments --c
  offers '' blocks --c
  offers '--accept' stations --a
  offers '--accept' stations --accept RE --a
  offers '--record-length,--reject' stations --re
  offers '-o' blocks alpha.seed -o
  offers 'A,D,M,Q,R,S,T,V' blocks --types ''
  offers 'DVA,DVM,DVQ,DVR,DVS,DVT' blocks --types DV
  offers '4096' blocks --record-length 40
  offers 'alpha.seed,archive' volumes a
  offers 'alpha.seed,archive' volumes --known a
  offers 'alpha.seed,archive' blocks -j 2 --raw -o a
  offers 'with blank.seed' blocks alpha.seed w
}

if ! command -v "$shell" >/dev/null; then exit 77; fi
"test_$program"
exit "$failed"
