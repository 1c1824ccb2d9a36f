# SPDX-License-Identifier: MIT
# Of what llvm-cov exports: a table of the lines and branches that were reached in each layer, or with the
# argument "missing" the places that were not. The instances of a template count as one: a line or a branch is
# reached when one of them reaches it.

def layer:
    if startswith("src/") then split("/")[1]
    elif startswith("include/") then "public headers"
    elif startswith("errorhandling/") then "errorhandling"
    elif startswith("tools/") then "kxmodel"
    else empty end;

# [line, count] of each line with code. A segment is [line, column, count, has a count, begins a region, is a
# gap]; it lasts until the next one, so a line has what lasts from the one before and the regions that it begins.
def lines:
    foreach (group_by(.[0])[]) as $line ({};
        .last as $last
        | ($line | map(select(.[3] and .[4] and (.[5] | not)) | .[2])) as $begun
        | .out = [if $last[3] then range(.last[0] + 1; $line[0][0]) | [., $last[2]] else empty end]
        | if ($line[0][3] or ($line[0][4] | not)) and ($last[3] or $begun != [])
          then .out += [[$line[0][0], ([$last[2] // 0] + $begun | max)]] else . end
        | .last = $line[-1];
        .out[]);

# [line, column, times true, times false] of each condition.
def branches:
    group_by(.[0:4])[] | [.[0][0], .[0][1], (map(.[4]) | add), (map(.[5]) | add)];

def row: map(tostring) | join("\t");
def share($part; $all): if $all == 0 then "-" else "\($part * 1000 / $all | round / 10) %" end;

[.data[0].files[]
    | (.filename | ltrimstr($root) | sub("^(.*/)?\\.\\./"; "")) as $file # ccache makes them relative
    | ($file | layer) as $layer
    | {$file, $layer, lines: [.segments | lines], branches: [.branches | branches]}]
| if $show == "missing" then
    .[] | .file as $file
    | [(.lines[] | select(.[1] == 0) | [.[0], 0, "not reached"]),
       (.branches[] | select((.[2] == 0) != (.[3] == 0)) | [.[0], .[1], if .[2] == 0 then "never true" else "never false" end])]
    | sort[] | if .[1] == 0 then "\($file):\(.[0]): \(.[2])" else "\($file):\(.[0]):\(.[1]): \(.[2])" end
  else
    (group_by(.layer) + [map(.layer = "all")])[]
    | [.[].lines[]] as $lines | [.[].branches[]] as $branches
    | ($lines | length) as $all | ([$lines[] | select(.[1] > 0)] | length) as $reached
    | ([$branches[] | .[2:4][] | select(. > 0)] | length) as $taken
    | [.[0].layer, $all, share($reached; $all), 2 * ($branches | length), share($taken; 2 * ($branches | length))] | row
  end
