#!/bin/sh
# Runs every fenced block of sh in the README and in docs/, in order and as it stands, from installed
# files and on a fresh machine for each document: documents.sh BUILD SOURCE
set -eu
build=$(cd "$1" && pwd)
source=$(cd "$2" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# Blocks that are not run here, by their first line, and why.
not_run() {
    case $1 in
    "apt-get install ./libbrevikconfig0_"*) echo "changes the host" ;;
    "./dev demo") echo "builds; the test examples.demo runs the demo" ;;
    "./dev test") echo "is what runs this test" ;;
    "./dev package"*) echo "builds a second time" ;;
    "./dev fuzz 60") echo "takes minutes, and another compiler" ;;
    "ctest --test-dir "*) echo "runs tests within a test" ;;
    "cmake --preset release -DBREVIK_VERIFICATION_KEY="*) echo "builds a second time" ;;
    "/usr/share/brevikconfig/"*) echo "takes installed packages; examples.demo runs it elsewhere" ;;
    "mkdir -p /var/lib/brevikconfig") echo "changes the host" ;;
    "ln -s /srv/music /var/lib/brevikconfig/"*) echo "changes the host" ;;
    "tests/packages/clean_root.sh "*) echo "takes a root to throw away, and packages" ;;
    "brevikctl trace") echo "runs until it is stopped" ;;
    esac
}

cmake --install "$build" --prefix "$scratch/prefix" >/dev/null
libraries=$(dirname "$(find "$scratch/prefix" -name libbrevikconfig.so)")
PATH=$scratch/prefix/bin:$PATH
LD_LIBRARY_PATH=$libraries
PKG_CONFIG_PATH=$libraries/pkgconfig
CMAKE_PREFIX_PATH=$scratch/prefix
CMAKE_GENERATOR=Ninja
export PATH LD_LIBRARY_PATH PKG_CONFIG_PATH CMAKE_PREFIX_PATH CMAKE_GENERATOR

# The demo from the installed files.
mkdir "$scratch/demo"
"$scratch/prefix/share/brevikconfig/examples/demo.sh" --installed "$scratch/demo" >"$scratch/said" 2>&1 ||
    { cat "$scratch/said"; echo "the installed demo failed"; exit 1; }

run=0
for document in "$source/README.md" "$source"/docs/*.md; do
    name=$(basename "$document" .md)
    folder=$scratch/$name
    mkdir -p "$folder/keys" "$folder/build"
    ln -s "$build" "$folder/build/release"
    cp "$source"/examples/*.c "$folder"
    cp "$source"/keys/*.txt "$folder/keys"
    blocks=$folder/blocks
    mkdir "$blocks"
    awk -v blocks="$blocks" '
        /^```sh$/ { file = sprintf("%s/%03d", blocks, ++count); next }
        /^```/ { file = ""; next }
        file { print > file }' "$document"
    {
        echo 'set -eu'
        for block in "$blocks"/*; do
            [ -e "$block" ] || continue
            [ -z "$(not_run "$(head -n 1 "$block")")" ] || continue
            cat "$block"
        done
    } >"$folder/script"
    run=$((run + $(wc -l <"$folder/script") - 1))
    (cd "$folder" && BREVIK_MACHINE=$folder/machine sh -x script >said 2>&1 </dev/null) ||
        { cat "$folder/said"; echo "a command of $name.md failed"; exit 1; }
    # A command in an indented block would not be seen.
    if grep -nE '^    (brevikctl|\./dev|cmake|apt-get|ln|curl) ' "$document"; then
        echo "$name.md: put these commands into a fenced block of sh"
        exit 1
    fi
done
[ "$run" -ge 20 ] || { echo "only $run lines of commands found"; exit 1; }
