#!/usr/bin/env bash
# The families depend on each other one way only:
#
#   core <- strings <- {text, datetime};  core <- geometry <- text;  image -> text (vyfont.h only)
#
# Every quoted #include in include/ and src/<family>/ is checked against that graph. A public
# header belongs to the family in the table below; a private header belongs to the folder it
# lives in and may be included from that family only. A header missing from the table fails
# the check, so a new one has to be given its family here.
#
# Usage: dependencies.sh ROOT
set -u -o pipefail

if (($# != 1)); then
    echo "usage: $0 ROOT" >&2
    exit 2
fi
root=$1

declare -A family=(
    [vyglobal.h]=core [vyvector.h]=core [vylist.h]=core [vyhash.h]=core [vymap.h]=core
    [vybytearray.h]=strings [vybitarray.h]=strings [vyunicode.h]=strings [vystring.h]=strings
    [vystringlist.h]=strings [vylocale.h]=strings
    [vydatetime.h]=datetime
    [vyfont.h]=text [vyfreetype.h]=text [vyfonteunitcache.h]=text [vyfontcache.h]=text
    [vyshaping.h]=text [vyfontengine.h]=text [vyfontmetrics.h]=text
    [vybitmap.h]=image [vybmpdata.h]=image
    [vypoint.h]=geometry [vysize.h]=geometry [vyrect.h]=geometry [vyline.h]=geometry
    [vycolor.h]=geometry [vyregion.h]=geometry [vybezier.h]=geometry
)
# What each family may include besides itself.
declare -A allowed=(
    [core]=""
    [strings]="core"
    [geometry]="core"
    [datetime]="core strings"
    [text]="core strings geometry"
    [image]="core"
)
# Single headers allowed across the graph: the glyph image writer takes the glyph record.
declare -A exception=([image:vyfont.h]=1)

cd "$root" || exit 1
shopt -s nullglob
bad=0
checked=0
report() {
    echo "$1"
    bad=1
}

check_file() {
    local file=$1 from=$2 line header to private
    while IFS= read -r line; do
        [[ $line =~ ^[[:space:]]*#[[:space:]]*include[[:space:]]*\"([^\"]+)\" ]] || continue
        header=${BASH_REMATCH[1]}
        if [[ -n ${family[$header]:-} ]]; then
            to=${family[$header]}
        elif [[ $file == src/* && -f $(dirname "$file")/$header ]]; then
            to=$from
        else
            private=(src/*/"$header")
            if ((${#private[@]})); then
                report "$file: includes $header, private to ${private[0]%/*}"
            else
                report "$file: includes $header, which has no family"
            fi
            continue
        fi
        [[ $to == "$from" || -n ${exception[$from:$header]:-} ]] && continue
        [[ " ${allowed[$from]} " == *" $to "* ]] ||
            report "$file: $from may not include $header ($to)"
    done <"$file"
    checked=$((checked + 1))
}

for file in include/pub/*.h include/core/*.h; do
    name=$(basename "$file")
    if [[ -z ${family[$name]:-} ]]; then
        report "$file: public header with no family"
        continue
    fi
    check_file "$file" "${family[$name]}"
done
for dir in src/*/; do
    from=$(basename "$dir")
    if [[ -z ${allowed[$from]+set} ]]; then
        report "$dir: not a family"
        continue
    fi
    for file in "$dir"*.h "$dir"*.cpp; do
        check_file "$file" "$from"
    done
done
if ((checked == 0)); then
    echo "nothing to check under $root" >&2
    exit 1
fi
((bad)) && exit 1
echo "dependencies follow the family graph ($checked files)"
