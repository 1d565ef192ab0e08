#!/bin/sh
# Runs every example on a machine with one product, and compares what it says: run.sh BUILD SOURCE
set -eu
build=$(cd "$1" && pwd)
source=$(cd "$2" && pwd)
BREVIK_MACHINE=$(mktemp -d)
export BREVIK_MACHINE
trap 'rm -rf "$BREVIK_MACHINE"' EXIT
brevikctl() { "$build/tools/brevikctl/brevikctl" "$@" >/dev/null; }
folder=$BREVIK_MACHINE/drives/c/Suite

brevikctl machine create
mkdir "$folder"
cp "$build"/examples/*_c "$build"/examples/*_cpp "$folder"
printf 'QDR_ProductName = Example\nSKUName = Suite\n' >"$BREVIK_MACHINE/one.txt"
brevikctl certificate sign "$BREVIK_MACHINE/one.txt" -o "$folder/one.qzc" \
    --key "$source/keys/DEVELOPMENT-ONLY-private-key.txt"
brevikctl certificate install "$folder/one.qzc" --guid '{1}' --language 1036

# expect NAME TEXT COMMAND...
expect() {
    name=$1
    wanted=$(printf "$2")
    shift 2
    said=$("$@") || { echo "$name failed"; exit 1; }
    [ "$said" = "$wanted" ] && return
    printf '%s said:\n%s\ninstead of:\n%s\n' "$name" "$said" "$wanted"
    exit 1
}

language='of 1031, 1033 and 1036 I run in 1036'
codes='of FRA and deu I run in 1036'
expect host.c "$language\n$codes\nthe value of volume is -1\nthe value of volume is 11" \
    "$folder/host_c"
expect host.cpp "$language\nproducts beside this program: 1\nits name is Example
the value of volume is 11" "$folder/host_cpp" '{1}'
expect product.c 'products beside this program: 1\n{1}\n  QDR_ProductName: Example\n  SKUName: Suite
of 1033, 1031 and 1036 this program runs in 1036\nSKUName of example is Suite' \
    "$folder/product_c" example SKUName

# The sanitizers' run-time libraries stand ahead of everything, which python3 is not built for.
if [ "${3:-}" = sanitized ] || ! command -v python3 >/dev/null; then
    exit 0
fi
BREVIKCONFIG_LIBRARIES=$build/src
export BREVIKCONFIG_LIBRARIES
brevikctl cookie set volume 7
expect host.py "$language\nits name is Example\nthe value of volume is 11" \
    python3 "$source/examples/host.py" '{1}'
