#!/bin/sh
# Which key texts a build takes: keys.sh TOOL SOURCE
set -eu
fail() { echo "$*"; exit 1; }
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
"$1" certificate keygen "$scratch/first" >/dev/null
own=$("$1" certificate keygen "$scratch/second" --present "$scratch/first" | grep -oE '[0-9a-f]{64}-[0-9a-f]{65}')
configure() { cmake "$@" -P "$source/cmake/keys.cmake" >/dev/null 2>&1; }
source=$2

configure || fail "a plain build is refused"
configure -DBREVIK_DEVELOPMENT_KEYS=OFF && fail "a package with the development keys is built"
configure -DBREVIK_DEVELOPMENT_KEYS=OFF -DBREVIK_VERIFICATION_KEY="$own" || fail "$own is refused"
for digit in 0 1; do
    case $own in "$digit"*) continue ;; esac
    configure -DBREVIK_VERIFICATION_KEY="$digit${own#?}" && fail "$own is taken with a wrong digit"
done
exit 0
