#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# readme_commands.sh SOURCE_DIR KXMODEL SCRATCH_DIR: gives the commands of the tool that the README shows, in their
# order, in an empty folder beside the examples. None may fail (status 1 tells of differences or warnings), and what
# the README shows below a command is what it prints.
set -eu
source_dir=$1 kxmodel=$2 scratch_dir=$3

rm -rf "$scratch_dir"
mkdir -p "$scratch_dir"
ln -s "$source_dir/examples" "$scratch_dir/examples"
cd "$scratch_dir"

kxmodel() { "$kxmodel" "$@"; }

count=0 shown=
compare_output() {
    [[ -z $shown ]] || diff -u <(printf '%s' "$shown") output
    shown=
}
while IFS= read -r line; do
    if [[ $line == '    kxmodel '* ]]; then
        compare_output
        echo "$line"
        status=0
        eval "$line" > output || status=$?
        [[ $status -le 1 ]] || exit 1
        is_output=1 count=$((count + 1))
    elif [[ $line == '    '* && -n ${is_output-} ]]; then
        shown+=${line#    }$'\n'
    else
        is_output=
    fi
done < "$source_dir/README.md"
compare_output
echo "$count commands"
[[ $count -gt 0 ]]
