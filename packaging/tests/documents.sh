#!/bin/bash
# The man pages and the completions know what the programs know: every command, option and value that
# --help names, and no option that it does not. Every line that is printed is a fault; status 1 if any.
# Usage: documents.sh VOSTEL VOSTEL-NETTOP PACKAGING-FOLDER
vostel=$1 nettop=$2 packaging=$3
checks=0 faults=0
fault() { echo "$*"; faults=$((faults + 1)); }
check() { checks=$((checks + 1)); "${@:2}" || fault "$1"; }

page() { sed 's/\\-/-/g; s/\\f.//g' "$packaging/man/$1.1.in"; }
names() { grep -qE -- "(^|[^-a-z])$2([^-a-z]|$)" <<<"$1"; }
options_of() { grep -oE -- '--[a-z][a-z-]*' <<<"$1" | sort -u; }

# What bash offers for the words; the last one is what is being completed.
offered() {
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
    _vostel
    printf '%s\n' "${COMPREPLY[@]}"
}
offers() { offered vostel "${@:2}" | grep -qx -- "$1=\?"; }
. "$packaging/completions/vostel.bash"
zsh=$(cat "$packaging/completions/_vostel")
fish=$(cat "$packaging/completions/vostel.fish")

# One section of the man page: a command's, or that of the program's own options.
section() { page vostel | awk -v want="$1" '/^\.S[SH] /{on = ($2 == want)} on'; }

# check_options COMMAND HELP: COMMAND is empty for the program itself.
check_options() {
    local where=${1:-OPTIONS} words=($1) option
    for option in $(options_of "$2"); do
        local name=${option#--}
        [ "$option" = --help ] ||
            check "man page, $where: $option is missing" names "$(section "$where")" "$option"
        check "bash, $where: $option is missing" offers "$option" "${words[@]}" --
        check "zsh, $where: $option is missing" grep -qE -- "'(\([^)]*\))?$option=?\[" <<<"$zsh"
        check "fish, $where: $option is missing" grep -qE -- "(${1:-_from [$]commands}'?\"? |^complete -c vostel )-l $name( |$)|$1' -l $name " <<<"$fish"
    done
    for option in $(offered vostel "${words[@]}" --); do
        check "bash, $where: ${option%=} is offered, but unknown" names "$2" "${option%=}"
    done
}

help=$("$vostel" --help)
check_options '' "$help"
commands=$(awk '/^Commands:/{on = 1; next} /^[^ ]/{on = 0} on && /^  [a-z]/{print $1}' <<<"$help")
check 'no commands found in --help' test -n "$commands"
for command in $commands; do
    check "man page: no section for $command" grep -qE "^\.SS $command( |$)" "$packaging/man/vostel.1.in"
    check "bash: $command is missing" offers "$command" "${command:0:1}"
    check "zsh: $command is missing" grep -qE "['\"]$command:" <<<"$zsh"
    check "fish: $command is missing" grep -qE -- "-a $command( |$)" <<<"$fish"
    check_options "$command" "$("$vostel" "$command" --help)"
done
for command in $(offered vostel '' | grep '^[a-z]'); do
    check "bash: $command is offered, but unknown" grep -qx "$command" <<<"$commands"
done

# check_values OPTION COMMAND...: the values that the program itself lists when it is given a wrong one.
check_values() {
    local option=$1 known value
    shift
    known=$("$vostel" "$@" "$option=?" 2>&1 | sed -n 's/.*(known: \(.*\))/\1/p' | tr -d ,)
    check "$option: the program lists no values" test -n "$known"
    local words=("${@:1:$(($# > 0 ? 1 : 0))}")
    check "bash, $option: not $known" test \
        "$(offered vostel "${words[@]}" "$option" = '' | sort | xargs)" = "$(xargs -n 1 <<<"$known" | sort | xargs)"
    for value in $known; do
        check "man page, $option: $value is missing" names "$(page vostel)" "$value"
        check "zsh, $option: $value is missing" grep -qE -- "$option=\[.*[( ]${value}[ )]" <<<"$zsh"
        check "fish, $option: $value is missing" grep -qE -- "-l ${option#--} -x -a '([^']* )?${value}[ ']" <<<"$fish"
    done
}
check_values --bar
check_values --module snapshot --out=.
check_values --appearance snapshot --out=.

# The helper's options have one letter, too.
help=$("$nettop" --help)
for option in $(grep -oE -- '(^|[ [])-{1,2}[A-Za-z]+' <<<"$help" | tr -d ' [' | sort -u); do
    check "man page of the helper: $option is missing" names "$(page vostel-nettop)" "$option"
done

# The version that the software centre shows is this one.
version=$("$vostel" --version | cut -d ' ' -f 2)
check "metainfo: the newest release is not $version" test \
    "$(grep -o '<release version="[^"]*"' "$packaging/com.vostel.app.metainfo.xml" | head -n 1)" \
    = "<release version=\"$version\""

echo "$checks checks, $faults faults"
[ "$faults" = 0 ] && [ "$checks" -gt 60 ]
