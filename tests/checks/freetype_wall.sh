#!/usr/bin/env bash
# FreeType stays behind one wall: src/vyfreetype.cpp is the only file under src/, include/
# and tools/ that includes a FreeType header (ft2build.h, <freetype/...>, or the FT_*_H
# macros that stand for FreeType's headers).
#
# Usage: freetype_wall.sh ROOT
set -u -o pipefail

if (($# != 1)); then
    echo "usage: $0 ROOT" >&2
    exit 2
fi
root=$1
allowed=src/vyfreetype.cpp
include='^[[:space:]]*#[[:space:]]*include[[:space:]]*'
pattern="$include"'([<"](freetype2/)?(ft2build\.h|freetype/)|FT_[A-Z0-9_]+_H)'

dirs=()
for d in src include tools; do
    [[ -d $root/$d ]] && dirs+=("$d")
done
if ((${#dirs[@]} == 0)); then
    echo "nothing to check under $root" >&2
    exit 1
fi

hits=$(cd "$root" && grep -rnIE "$pattern" "${dirs[@]}" | grep -v "^$allowed:")
if [[ -n $hits ]]; then
    echo "FreeType included outside $allowed:"
    echo "$hits"
    exit 1
fi
echo "FreeType includes confined to $allowed (checked: ${dirs[*]})"
