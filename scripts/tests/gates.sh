#!/bin/bash
# The checks of scripts/ fail when their tool is missing, when it finds something and when it looked at nothing;
# leave-nothing.sh notices what a test leaves. Run in a checkout made for this, with stand-ins for the slow tools.
# Every line that is printed is a fault; status 1 if any. Usage: gates.sh CHECKOUT
set -u
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
checks=0 faults=0
fault() { echo "$*"; faults=$((faults + 1)); }
# passes NAME COMMAND..., fails NAME WORDS COMMAND...: WORDS is what it must say.
passes() {
    checks=$((checks + 1))
    "${@:2}" >"$work/out" 2>&1 || fault "$1: failed: $(tail -n 3 "$work/out")"
}
fails() {
    checks=$((checks + 1))
    ! "${@:3}" >"$work/out" 2>&1 || fault "$1: passed"
    grep -qF -- "$2" "$work/out" || fault "$1: does not say \"$2\": $(tail -n 3 "$work/out")"
}
says() { checks=$((checks + 1)); grep -qxF -- "$2" "$work/out" || fault "$1: $(tail -n 3 "$work/out")"; }

mkdir -p "$work/bin" "$work/checkout" && cd "$work/checkout" || exit 1
for tool in sh bash env dirname find sed awk grep tail head cat cut tr wc sort basename mktemp mkdir rm xargs nproc git id \
    expr sleep date test true false; do
    ln -s "$(type -P $tool)" "$work/bin/$tool"
done
stand_in() { { echo '#!/bin/sh'; cat; } >"$work/bin/$1"; chmod +x "$work/bin/$1"; }
stand_in ninja <<<''
stand_in c++ <<<''
stand_in cmake <<<'[ "$1" != --preset ] || { mkdir -p "build/$2"; : >"build/$2/build.ninja"
    echo "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" >"build/$2/CMakeCache.txt"; }'
here() { PATH=$work/bin VOSTEL_INSTALL=no "$@"; }
mkdir -p scripts .ci src/core helpers bench fuzz/corpus build/ci
cp "$source"/scripts/*.sh scripts
cp "$source"/.clang-* .

# The format, by the real tool.
printf 'int main() {\n    return 0;\n}\n' >src/core/Good.cpp
fails 'format without the tool' 'clang-format-19 is not installed' here sh scripts/check-format.sh
ln -s "$(type -P clang-format-19)" "$work/bin/clang-format-19"
passes 'format' here sh scripts/check-format.sh
printf 'int  main(){ return 0;}\n' >src/core/Bad.cpp
fails 'format of a bad file' 'not formatted: src/core/Bad.cpp' here sh scripts/check-format.sh
rm src/core/Bad.cpp

# clang-tidy: which files it is given.
fails 'tidy without the tool' 'clang-tidy-19 is not installed' here sh scripts/check-tidy.sh
stand_in clang-tidy-19 <<<'for file; do :; done; echo "looked at $file"; ! grep -q FAULT "$file"'
fails 'tidy without a build' 'build the preset ci first' here sh scripts/check-tidy.sh --all
: >src/core/Good.h >src/core/Alone.h
printf '#include "core/Alone.h"\n' >src/core/User.cpp
printf '"%s/src/core/%s"\n' "$PWD" Good.cpp "$PWD" User.cpp >build/ci/compile_commands.json
printf '/build/\n' >.gitignore
git() { command git -c user.name=n -c user.email=e@example.org "$@"; }
git init -q . && git add . && git commit -qm first
passes 'tidy of all' here sh scripts/check-tidy.sh --all
says 'tidy of all: the second file' 'looked at src/core/User.cpp'
checks=$((checks + 1))
[ "$(cat .ci/tidy-base)" = "$(git rev-parse HEAD)" ] || fault 'tidy of all: the commit is not noted'
git add . && git commit -qm base
passes 'tidy of nothing' here sh scripts/check-tidy.sh
says 'tidy of nothing' "no source differs from $(cat .ci/tidy-base)"
echo '// FAULT' >>src/core/Good.cpp
fails 'tidy of a changed file' 'looked at src/core/Good.cpp' here sh scripts/check-tidy.sh
git checkout -q . && echo >>src/core/Good.h
passes 'tidy of a changed header' here sh scripts/check-tidy.sh
says 'tidy of a changed header' 'looked at src/core/Good.cpp'
git checkout -q . && echo >>src/core/Alone.h
passes 'tidy of a header alone' here sh scripts/check-tidy.sh
says 'tidy of a header alone' 'looked at src/core/User.cpp'
: >src/core/New.cpp
fails 'tidy of a file that nothing builds' 'src/core/New.cpp is not in' here sh scripts/check-tidy.sh
rm src/core/New.cpp
echo 0123456789012345678901234567890123456789 >.ci/tidy-base
passes 'tidy from an unknown commit' here sh scripts/check-tidy.sh
says 'tidy from an unknown commit' 'looked at src/core/User.cpp'

# Fuzz targets.
fails 'fuzz without the compiler' 'clang++-19 is not installed' here sh scripts/check-fuzz.sh 1
stand_in clang++-19 <<<''
mkdir -p build/fuzz/fuzz fuzz/corpus/a_fuzz
fails 'fuzz with a target missing' 'one folder for each' here sh scripts/check-fuzz.sh 1
target() { { echo '#!/bin/sh'; cat; } >build/fuzz/fuzz/a_fuzz; chmod +x build/fuzz/fuzz/a_fuzz; }
target <<<'echo "stat::number_of_executed_units: 7"'
passes 'fuzz' here sh scripts/check-fuzz.sh 1
target <<<'echo boom; exit 77'
fails 'fuzz that finds something' 'a_fuzz found something' here sh scripts/check-fuzz.sh 1
target <<<'echo "stat::number_of_executed_units: 0"'
fails 'fuzz that runs nothing' 'a_fuzz ran nothing' here sh scripts/check-fuzz.sh 1

# Benchmarks.
mkdir -p build/ci/bench
echo 'vostel_bench(a_bench A.cpp)' >bench/CMakeLists.txt
fails 'benchmarks with one missing' 'not every benchmark was built' here sh scripts/check-benches.sh
bench() { { echo '#!/bin/sh'; cat; } >build/ci/bench/a_bench; chmod +x build/ci/bench/a_bench; }
bench <<<'echo "name,iterations"; echo "\"BM_a\",5,1.0,1.0,ns,,,,,"'
passes 'benchmarks' here sh scripts/check-benches.sh
bench <<<'echo "\"BM_a\",,,,,,,,true,\"no data\""'
fails 'a benchmark that gives up' 'a_bench measures nothing' here sh scripts/check-benches.sh
bench <<<'exit 1'
fails 'a benchmark that ends badly' 'a_bench fails' here sh scripts/check-benches.sh

# What tests leave.
leave=$source/scripts/leave-nothing.sh
export TMPDIR=$work/tmp
mkdir "$TMPDIR"
passes 'leaves nothing' "$leave" sh -c ': >"$TMPDIR/file"; rm "$TMPDIR/file"'
fails 'leaves a file' './file' "$leave" sh -c ': >"$TMPDIR/file"'
fails 'leaves a socket' './bus' "$leave" sh -c ': >"$XDG_RUNTIME_DIR/bus"'
fails 'leaves a process' 'left running: sleep 61.0717' "$leave" sh -c 'sleep 61.0717 & exit 0'
checks=$((checks + 1))
! pgrep -fx 'sleep 61\.0717' >/dev/null || fault 'what a test left still runs'
"$leave" sh -c 'exit 3'
[ $? = 3 ] || fault "the status of a test is lost"
checks=$((checks + 2))
[ -z "$(ls -A "$TMPDIR")" ] || fault 'leave-nothing.sh leaves something itself'

[ $checks -gt 30 ] || fault "only $checks checks ran"
[ $faults = 0 ]
