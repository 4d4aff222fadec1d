#!/usr/bin/env bash
# Proves that each mechanical check can fail: runs it over small trees with and without the
# fault it looks for and expects it to pass on the clean tree and to fail, naming the culprit,
# on the faulty one.
#
# Usage: selftest.sh CHECKS_DIR COMPILER [FLAGS...]
set -u -o pipefail

checks=$1
shift
compiler=("$@")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

failures=0
# expect pass|fail NAME CULPRIT COMMAND...: runs COMMAND; a failure must mention CULPRIT.
expect() {
    local want=$1 name=$2 culprit=$3
    shift 3
    local out rc
    out=$("$@" 2>&1)
    rc=$?
    if [[ $want == pass && $rc -ne 0 ]]; then
        echo "FAIL $name: expected success, got exit $rc:"
        echo "$out"
        failures=$((failures + 1))
    elif [[ $want == fail && ($rc -ne 1 || $out != *"$culprit"*) ]]; then
        echo "FAIL $name: expected exit 1 naming $culprit, got exit $rc:"
        echo "$out"
        failures=$((failures + 1))
    else
        echo "ok   $name"
    fi
}

tree() {
    local t=$work/$1
    mkdir -p "$t/include/pub" "$t/include/core" "$t/src" "$t/tools"
    printf '#ifndef A_H\n#define A_H\n#include <string>\ninline std::string a() { return "a"; }\n#endif\n' \
        >"$t/include/pub/vya.h"
    printf '#ifndef B_H\n#define B_H\nstruct VyB { int x; };\n#endif\n' >"$t/include/core/vyb.h"
    printf '#include "vya.h"\nint main() { return 0; }\n' >"$t/src/vya.cpp"
    echo "$t"
}

# Header check: a clean tree, a header that leans on an include it does not make, and one
# without an include guard.
t=$(tree headers_clean)
expect pass headers_clean "" "$checks/headers_standalone.sh" "$t" "$work/out1" "${compiler[@]}"
t=$(tree headers_missing_include)
printf '#ifndef C_H\n#define C_H\ninline std::size_t c(const std::string& s) { return s.size(); }\n#endif\n' \
    >"$t/include/pub/vyc.h"
expect fail headers_missing_include include/pub/vyc.h \
    "$checks/headers_standalone.sh" "$t" "$work/out2" "${compiler[@]}"
t=$(tree headers_no_guard)
printf 'struct VyD { int y; };\n' >"$t/include/core/vyd.h"
expect fail headers_no_guard include/core/vyd.h \
    "$checks/headers_standalone.sh" "$t" "$work/out3" "${compiler[@]}"

# Family graph: a clean tree, an upward include, a private header of another family, the image
# family reaching past the glyph record, and a header with no family.
deps=$work/deps
mkdir -p "$deps/include/pub" "$deps/src/text" "$deps/src/image" "$deps/src/geometry" \
    "$deps/src/datetime"
printf '#include "vyglobal.h"\n' >"$deps/include/pub/vystring.h"
: >"$deps/include/pub/vyglobal.h"
printf '#include "vystring.h"\n#include "vyshapingprivate.h"\n' >"$deps/src/text/vyshaping.cpp"
: >"$deps/src/text/vyshapingprivate.h"
printf '#include "vyfont.h"\n#include "vyglobal.h"\n' >"$deps/src/image/vybmpdata.cpp"
expect pass deps_clean "" "$checks/dependencies.sh" "$deps"
printf '#include "vyfontmetrics.h"\n' >"$deps/src/geometry/vyrect.cpp"
expect fail deps_upward src/geometry/vyrect.cpp "$checks/dependencies.sh" "$deps"
rm "$deps/src/geometry/vyrect.cpp"
printf '#include "vyshapingprivate.h"\n' >"$deps/src/datetime/vydate.cpp"
expect fail deps_private src/datetime/vydate.cpp "$checks/dependencies.sh" "$deps"
rm "$deps/src/datetime/vydate.cpp"
printf '#include "vyfontcache.h"\n' >"$deps/src/image/vybitmap.cpp"
expect fail deps_image src/image/vybitmap.cpp "$checks/dependencies.sh" "$deps"
rm "$deps/src/image/vybitmap.cpp"
: >"$deps/include/pub/vynew.h"
expect fail deps_no_family include/pub/vynew.h "$checks/dependencies.sh" "$deps"

# Exported symbols: a library that matches its list, then one that exports one more function.
syms=$work/syms
mkdir -p "$syms"
printf 'int vyKept(int x) { return x; }\n' >"$syms/a.cpp"
"${compiler[@]}" -shared -fPIC "$syms/a.cpp" -o "$syms/liba.so"
"$checks/exported_symbols.sh" --update "$syms/liba.so" "$syms/list" >/dev/null
expect pass symbols_clean "" "$checks/exported_symbols.sh" "$syms/liba.so" "$syms/list"
printf 'int vyLeaked(int x) { return x; }\n' >>"$syms/a.cpp"
"${compiler[@]}" -shared -fPIC "$syms/a.cpp" -o "$syms/liba.so"
expect fail symbols_leak "vyLeaked(int)" "$checks/exported_symbols.sh" "$syms/liba.so" "$syms/list"

# Outside references, in a git checkout (tracked files only) and in a plain tree.
ref=Par
ref+="t 3.1"
doc=spec
doc+=.md
t=$(tree refs_clean)
expect pass refs_clean "" "$checks/provenance.sh" "$t"
t=$(tree refs_plain)
echo "// see $ref" >>"$t/src/vya.cpp"
expect fail refs_plain src/vya.cpp "$checks/provenance.sh" "$t"
if command -v git >/dev/null; then
    t=$(tree refs_git)
    git -C "$t" init -q
    echo "// as $doc says" >"$t/src/tracked.cpp"
    echo "// as $doc says" >"$t/src/untracked.cpp"
    git -C "$t" add src/tracked.cpp src/vya.cpp
    expect fail refs_git src/tracked.cpp "$checks/provenance.sh" "$t"
    git -C "$t" rm -q --cached src/tracked.cpp
    expect pass refs_git_untracked_ignored "" "$checks/provenance.sh" "$t"
fi

if ((failures)); then
    echo "$failures self-test(s) failed"
    exit 1
fi
echo "all checks fail on their faults and pass on clean trees"
