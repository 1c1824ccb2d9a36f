#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# usage: check_exports.sh OBJDUMP DLL INCLUDE-DIRECTORY...
# A DLL exports what the headers below the include directories declare, and nothing else: each name of an
# exported symbol, its namespaces and classes included, stands in them, and none is of the standard library. Ends with status 1 when one does not.
set -eu -o pipefail
export LC_ALL=C
objdump=$1 dll=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

find "$@" -name '*.h' -exec cat {} + | sed 's|//.*||' | grep -oE '[A-Za-z_][A-Za-z0-9_]*' | sort -u > "$work/known"
# The table "[Ordinal/Name Pointer]" has a line "[ordinal] name" for each, and ends with a blank one.
"$objdump" -p "$dll" | awk '/Name Pointer\] Table/ { on = 1; next } on && !NF { on = 0 } on { print $NF }' |
    c++filt | sort -u > "$work/exports"
[[ -s $work/exports ]] || { echo "check_exports: $dll exports nothing" >&2; exit 1; }

# Without arguments of templates and functions, what follows the last blank is the qualified name; operators have
# the name of their class. g++ 12 marks the type information of some empty standard classes for export by
# itself.
sed -E -e '/^typeinfo for std::/d' -e 's/operator[^A-Za-z_ (]*(\(\))?.*/operator/' -e ':a; s/<[^<>]*>//; ta' \
    -e 's/\(anonymous namespace\)/anonymous/; s/\[abi:[a-z0-9]*\]//g; s/\(.*//; s/.* //; s/~//g' "$work/exports" |
    awk -v known="$work/known" '
        BEGIN { while ((getline name < known) > 0) isKnown[name] = 1; delete isKnown["std"] }
        {
            n = split($0, parts, /::/)
            for (i = 1; i <= n; ++i)
                if (!(parts[i] in isKnown)) { print $0; break }
        }' | sort -u > "$work/strangers"

echo "$(wc -l < "$work/exports") exports of ${dll##*/}"
if [[ -s $work/strangers ]]; then
    echo "not declared in a public header:"
    cat "$work/strangers"
    exit 1
fi
