#!/usr/bin/env bash
# The sources speak only of the library itself: no tracked file may point at an outside
# requirements document or at numbered parts of one. In a git checkout the tracked files are
# searched; otherwise every file of the tree except build output and the armhf sysroot.
#
# Usage: provenance.sh ROOT
set -u -o pipefail

if (($# != 1)); then
    echo "usage: $0 ROOT" >&2
    exit 2
fi
root=$1
# Assembled from pieces so that this script does not match itself.
word=[Ss]peci
word+=fication
pattern="$word"'|[Pp]art [0-9]\.[0-9]|spec\.md'

cd "$root" || exit 1
if git rev-parse --is-inside-work-tree >/dev/null 2>&1 &&
    [[ $(git rev-parse --show-toplevel) -ef . ]]; then
    mode="tracked files"
    hits=$(git ls-files -z | xargs -0 -r grep -HnIE --no-messages "$pattern" --)
else
    mode="all files (not a git checkout)"
    hits=$(grep -rnIE "$pattern" --exclude-dir='build*' --exclude-dir=.sysroot \
        --exclude-dir=.git --exclude-dir=out .)
fi
if [[ -n $hits ]]; then
    echo "outside references found in $mode:"
    echo "$hits"
    exit 1
fi
echo "no outside references in $mode"
