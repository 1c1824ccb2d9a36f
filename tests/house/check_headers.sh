#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# usage: check_headers.sh REPORT INCLUDE-DIRECTORY...
# Compiles every header below the include directories alone, with both compilers, and prints what each costs:
# processor seconds of a syntax check, and lines after preprocessing (blank lines not counted). The table goes
# to the file REPORT, too. Ends with status 1 when a header does not compile without a warning.
set -eu -o pipefail
export LC_ALL=C
compilers=(g++ clang++)

# check_one HEADER: leaves its line of the table, or what the compilers say, in a file of its own.
check_one() {
    local header=$1 base=$WORK_DIR/${1//\//_} compiler seconds lines row=''
    local TIMEFORMAT='%U %S'
    echo "#include <$header>" > "$base.cpp"
    for compiler in "${compilers[@]}"; do
        # shellcheck disable=SC2086 # the flags are a list
        if ! seconds=$({ time "$compiler" -std=c++20 -fsyntax-only -Wall -Wextra -Wpedantic -Werror $FLAGS \
            "$base.cpp" 2> "$base.log"; } 2>&1); then
            { echo "$header does not compile alone with $compiler:"; head -n 40 "$base.log"; } > "$base.failed"
            return 1
        fi
        # shellcheck disable=SC2086
        lines=$("$compiler" -std=c++20 -E -P $FLAGS "$base.cpp" | awk 'NF { n++ } END { print n + 0 }')
        row+=$(awk -v lines="$lines" '{ printf "%7.2f %8d  ", $1 + $2, lines }' <<< "$seconds")'  '
    done
    echo "$row$header" > "$base.row"
}

if [[ ${1-} == --one ]]; then
    check_one "$2"
    exit
fi

report=$1
shift
for compiler in "${compilers[@]}"; do
    command -v "$compiler" > /dev/null || { echo "check_headers: $compiler is not installed" >&2; exit 2; }
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
headers=$(for directory in "$@"; do (cd "$directory" && find . -name '*.h' -printf '%P\n'); done | sort)
[[ -n $headers ]] || { echo "check_headers: there is no header in: $*" >&2; exit 2; }

status=0
WORK_DIR=$work FLAGS="${*/#/-I}" xargs -P2 -n1 "$0" --one <<< "$headers" || status=1
{
    printf '%7s %8s    %7s %8s    %s\n' "${compilers[0]}" lines "${compilers[1]}" lines header
    find "$work" -name '*.row' -print0 | sort -z | xargs -0 -r cat
    echo "$(wc -l <<< "$headers") headers"
} | tee "$report"
find "$work" -name '*.failed' -print0 | sort -z | xargs -0 -r cat
exit $status
