#!/bin/sh
# Fails with what clang-tidy finds (.clang-tidy says what it looks for), and when it is not installed.
#
#   scripts/check-tidy.sh           the files that differ from the commit named in .ci/tidy-base; all files when
#                                   that commit is unknown here, or .clang-tidy differs from it
#   scripts/check-tidy.sh --all     all files; when nothing is found and everything is committed, that commit is
#                                   written to .ci/tidy-base
#
# Reads the compiler's options from build/ci, which must have been built: generated files are included, too.
# For a header that differs, the source of the same name is checked, else one that includes it.
set -u
cd "$(dirname "$0")/.." || exit 2
tidy=clang-tidy-19
# The folder may belong to another user than the one who checks.
git() { command git -c safe.directory="$PWD" "$@"; }
fail() { echo "check-tidy: $*" >&2; exit 2; }
command -v $tidy >/dev/null 2>&1 || fail "$tidy is not installed"
known=build/ci/compile_commands.json
[ -f $known ] || fail "no $known: build the preset ci first"

all_files() { find src helpers bench -name '*.cpp' | sort; }

# The sources to check for the changed files on standard input.
sources_of() {
    while read -r file; do
        case $file in
            src/*.cpp | helpers/*.cpp | bench/*.cpp) echo "$file" ;;
            src/*.h | helpers/*.h)
                if [ -f "${file%.h}.cpp" ]; then
                    echo "${file%.h}.cpp"
                else
                    grep -rlE --include='*.cpp' "#include \"([a-zA-Z/]*/)?$(basename "$file")\"" src helpers bench |
                        sort | head -n 1
                fi ;;
        esac
    done | sort -u
}

base=$(cat .ci/tidy-base 2>/dev/null)
what=${1:-}
if [ -z "$what" ]; then
    if [ -z "$base" ] || ! git merge-base --is-ancestor "$base" HEAD 2>/dev/null; then
        echo "the commit in .ci/tidy-base is not in the history: all files are checked"
        what=--all
    elif ! git diff --quiet "$base" -- .clang-tidy; then
        echo ".clang-tidy differs from $base: all files are checked"
        what=--all
    fi
fi
if [ "$what" = --all ]; then
    files=$(all_files)
    [ -n "$files" ] || fail "no sources found: the check is broken"
else
    changed=$(git diff --name-only --diff-filter=d "$base" && git ls-files --others --exclude-standard) ||
        fail "git cannot tell what differs from $base"
    files=$(echo "$changed" | sources_of)
    [ -n "$files" ] || { echo "no source differs from $base"; exit 0; }
fi
for file in $files; do
    grep -qF "/$file\"" $known || fail "$file is not in $known: add it to a CMakeLists.txt, or build again"
done

echo "$tidy: $(echo "$files" | wc -l) files"
# What clang alone warns of is another gate's affair.
echo "$files" | xargs -P "$(nproc)" -n 1 $tidy -p build/ci --quiet --extra-arg=-Wno-everything \
    2>build/tidy-errors.log || { grep -E 'error|rror:' build/tidy-errors.log >&2; exit 1; }

# Only what a commit holds can be a landed state.
if [ "${1:-}" = --all ] && git diff --quiet HEAD 2>/dev/null && [ -z "$(git ls-files --others --exclude-standard)" ]; then
    git rev-parse HEAD >.ci/tidy-base
fi
