#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# usage: check_imports.sh NM LIBRARY
# The library takes one function from the error handling library, so that applications can put their own in its
# place. Ends with status 1 when it takes others, or not this one.
set -eu -o pipefail
export LC_ALL=C
expected='Zorvan::ErrorHandling::Logger::appendLogMsgExt'

found=$("$1" -DC --undefined-only "$2" | sed -n 's/^ *U \(Zorvan::ErrorHandling::[^(]*\).*/\1/p' | sort -u)
if [[ $found != "$expected" ]]; then
    echo "${2##*/} imports of the error handling library, instead of only $expected:"
    echo "$found"
    exit 1
fi
