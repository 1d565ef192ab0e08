#!/bin/sh
# Runs every fuzz target of a build folder for some seconds each: run.sh BUILD SECONDS
set -eu
build=$1
seconds=$2
source=$(dirname "$0")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export BREVIK_MACHINE="$scratch/machine" XDG_RUNTIME_DIR="$scratch"

for file in "$source"/*.cpp; do
    name=$(basename "$file" .cpp)
    mkdir -p "$scratch/$name" "$source/corpus/$name"
    echo "fuzz: $name for $seconds seconds"
    # New inputs go to the scratch folder, findings to the build folder.
    "$build/fuzz/fuzz_$name" -max_total_time="$seconds" -print_final_stats=1 -verbosity=0 \
        -artifact_prefix="$build/finding-$name-" "$scratch/$name" "$source/corpus/$name"
done
echo "fuzz: no finding"
