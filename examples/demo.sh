#!/bin/sh
# Shows the main job on a machine of its own: demo.sh BUILD
set -eu
build=$1
machine=$build/demo-machine
rm -rf "$machine"
mkdir -p "$machine"
BREVIK_MACHINE=$(cd "$machine" && pwd)
export BREVIK_MACHINE

title() { printf '\n== %s\n' "$*"; }
brevikctl() {
    printf "$ brevikctl %s\n" "$*"
    "$build/tools/brevikctl/brevikctl" "$@"
}

title "A C program asks for its language, and keeps a value in the suite's cookie"
"$build/examples/host_c"

title "The value lies where every web client of the user finds it"
brevikctl cookie list

title "What the library says about one call (BREVIK_DEBUG_OUTPUT=-)"
BREVIK_DEBUG_OUTPUT=- "$build/examples/host_c" 2>&1 >/dev/null | sed '/bvkc_GetUserLanguage_Code/,$d'

printf '\nThe machine of this demo: %s\n' "$machine"
