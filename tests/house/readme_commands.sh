#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# readme_commands.sh SOURCE_DIR KXMODEL SCRATCH_DIR: gives the commands of the tool that the README shows, in their
# order, in an empty folder beside the examples. None may fail; status 1 tells of differences or warnings.
set -eu
source_dir=$1 kxmodel=$2 scratch_dir=$3

rm -rf "$scratch_dir"
mkdir -p "$scratch_dir"
ln -s "$source_dir/examples" "$scratch_dir/examples"
cd "$scratch_dir"

kxmodel() { "$kxmodel" "$@" > output; }

count=0
while IFS= read -r command; do
    echo "$command"
    status=0
    eval "$command" || status=$?
    [[ $status -le 1 ]] || exit 1
    count=$((count + 1))
done < <(sed -n 's/^    \(kxmodel .*\)/\1/p' "$source_dir/README.md")
echo "$count commands"
[[ $count -gt 0 ]]
