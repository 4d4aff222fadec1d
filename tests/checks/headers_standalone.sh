#!/usr/bin/env bash
# Every public header compiles on its own: for each header a translation unit that includes
# only that header (twice, which also proves its include guard) must compile cleanly.
#
# Usage: headers_standalone.sh ROOT WORKDIR COMPILER [FLAGS...]
# ROOT holds include/pub and include/core; WORKDIR receives one .cpp per header.
set -u -o pipefail

if (($# < 3)); then
    echo "usage: $0 ROOT WORKDIR COMPILER [FLAGS...]" >&2
    exit 2
fi
root=$1 work=$2
shift 2
compiler=("$@")

shopt -s nullglob
headers=("$root"/include/pub/*.h "$root"/include/core/*.h)
if ((${#headers[@]} == 0)); then
    echo "no public headers under $root/include" >&2
    exit 1
fi

mkdir -p "$work"
failed=()
for header in "${headers[@]}"; do
    name=$(basename "$header")
    folder=$(basename "$(dirname "$header")")
    unit=$work/${folder}_${name%.h}.cpp
    printf '#include "%s"\n#include "%s"\n' "$name" "$name" >"$unit"
    if ! out=$("${compiler[@]}" -I"$root/include/pub" -I"$root/include/core" -fsyntax-only \
        "$unit" 2>&1); then
        failed+=("include/$folder/$name")
        printf '%s does not compile on its own:\n%s\n' "include/$folder/$name" "$out"
    fi
done

echo "${#headers[@]} headers checked, ${#failed[@]} not self-contained"
if ((${#failed[@]})); then
    printf 'not self-contained: %s\n' "${failed[@]}"
    exit 1
fi
