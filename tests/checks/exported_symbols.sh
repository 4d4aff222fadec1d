#!/usr/bin/env bash
# The shared library exports exactly the committed list of symbols: the public API, with its
# odd spellings pinned. A symbol that appears (an internal helper that lost its hidden
# visibility, a leaked template instantiation) or disappears (a renamed or dropped public
# function) fails the check and is listed.
#
# Usage: exported_symbols.sh LIBRARY LIST            compare
#        exported_symbols.sh --update LIBRARY LIST   rewrite LIST from LIBRARY
set -u -o pipefail

update=0
if [[ ${1:-} == --update ]]; then
    update=1
    shift
fi
if (($# != 2)); then
    echo "usage: $0 [--update] LIBRARY LIST" >&2
    exit 2
fi
library=$1
list=$2

# Defined dynamic C++ symbols, demangled; the sanitizer runtimes' own symbols are not C++.
exported() {
    nm -D --defined-only "$library" | awk '$3 ~ /^_Z/ { print $3 }' | c++filt | LC_ALL=C sort -u
}

actual=$(exported) || exit 1
if [[ -z $actual ]]; then
    echo "no C++ symbols exported by $library" >&2
    exit 1
fi
if ((update)); then
    printf '%s\n' "$actual" >"$list"
    echo "wrote $(wc -l <"$list") symbols to $list"
    exit 0
fi
changes=$(diff <(LC_ALL=C sort -u "$list") <(printf '%s\n' "$actual") | grep '^[<>]')
if [[ -n $changes ]]; then
    echo "exported symbols of $library differ from $list ('<' listed only, '>' exported only):"
    echo "$changes"
    echo "a deliberate change: $0 --update $library $list"
    exit 1
fi
echo "$(wc -l <"$list") exported symbols match $list"
