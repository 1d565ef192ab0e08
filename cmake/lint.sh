#!/bin/sh
# Static checks that need no build. Prints each finding and exits 1 when there is one.
set -eu
cd "$(dirname "$0")/.."
failed=0

finding() {
    printf '%s\n' "$*"
    failed=1
}

sources=$(git ls-files --cached --others --exclude-standard | grep -E '\.(c|cpp|h)$')

# Layout.
for file in $sources; do
    clang-format --dry-run --Werror "$file" >/dev/null 2>&1 ||
        finding "$file: layout differs (clang-format -i $file)"
done

# Each source folder includes only folders of its own floor's folder or of lower floors.
floor() {
    case $1 in
    platform) echo 0 ;;
    text | registry) echo 1 ;;
    trace | modules) echo 2 ;;
    filesystem) echo 3 ;;
    catalogue) echo 4 ;;
    language | cookies) echo 5 ;;
    services) echo 6 ;;
    frame) echo 7 ;;
    *) echo none ;;
    esac
}
for file in $(printf '%s\n' $sources | grep '^src/'); do
    from=$(printf '%s' "$file" | cut -d/ -f2)
    [ "$(floor "$from")" != none ] || finding "$file: the folder stands on no floor"
    for to in $(sed -n 's|^#include "\([A-Za-z]*\)/.*"|\1|p' "$file" | sort -u); do
        [ "$to" = "$from" ] && continue
        if [ "$(floor "$to")" = none ] || [ "$(floor "$to")" -ge "$(floor "$from")" ]; then
            finding "$file: includes $to, which is not below $from"
        fi
        if [ "$from" = platform ] && [ "$to" != platform ]; then
            finding "$file: the platform includes nothing of ours"
        fi
    done
done

# No core file asks which host it is on, or reaches past the platform's headers.
for file in $(printf '%s\n' $sources | grep '^src/' | grep -v '^src/platform/'); do
    if grep -nE '_WIN32|__linux__|__unix__|platform/posix|<(unistd|windows|dlfcn|sys/[a-z]*)\.h>' \
        "$file"; then
        finding "$file: asks which host it is on"
    fi
done

# Components stand on the platform alone, and on what is common to them.
for file in $(printf '%s\n' $sources | grep '^components/'); do
    own=$(printf '%s' "$file" | cut -d/ -f2)
    for to in $(sed -n 's|^#include "\([A-Za-z_]*\)/.*"|\1|p' "$file" | sort -u); do
        case $to in
        "$own" | platform | common) ;;
        *) finding "$file: includes $to" ;;
        esac
    done
done

# rooms BASE NAME ROOM...
#
# Each room of the folder BASE, which is included under NAME, includes rooms that stand before it in
# the list alone, and there is no other room.
rooms() {
    base=$1
    name=$2
    shift 2
    below=
    for room in "$@"; do
        below="$below $room"
        for file in $(printf '%s\n' $sources | grep "^$base/$room/"); do
            for to in $(sed -n "s|^#include \"$name/\([a-z_]*\)/.*\"|\1|p" "$file" | sort -u); do
                case "$below " in
                *" $to "*) ;;
                *) finding "$file: includes $to, which is not below $room" ;;
                esac
            done
        done
    done
    for room in $(printf '%s\n' $sources | sed -n "s|^$base/\([^/]*\)/.*|\1|p" | sort -u); do
        case "$below " in
        *" $room "*) ;;
        *) finding "$base/$room: is no room that this check knows" ;;
        esac
    done
}
rooms tools/brevikctl brevikctl output trace files registry certificates commands

# A folder holds at most 22 files.
crowded=$(printf '%s\n' $sources | grep -E '^(src|components|tools)/' |
    sed 's|/[^/]*$||' | sort | uniq -c | awk '$1 > 22 { print $2 }')
for folder in $crowded; do
    finding "$folder: holds more than 22 files"
done

# No circle among rooms, the folders below these, or among the headers of one.
edges=$(grep -HoE '^#include "[^"]+"' $(printf '%s\n' $sources | grep -E '^(src|components|tools)/') |
    while IFS=: read -r file include; do
        header=${include#*\"}
        header=${header%\"}
        for base in src components tools tools/brevikctl; do
            if [ -e "$base/$header" ]; then
                echo "$file $base/$header"
                break
            fi
        done
    done)
printf '%s\n' "$edges" | sed -E 's|/[^/ ]+( .*)/[^/]+$|\1|' | awk '$1 != $2' | sort -u |
    tsort >/dev/null 2>"${TMPDIR:-/tmp}/circles.$$" ||
    finding "rooms include each other in a circle: $(cat "${TMPDIR:-/tmp}/circles.$$")"
rm -f "${TMPDIR:-/tmp}/circles.$$"
printf '%s\n' "$edges" | grep '\.h .*' | grep -v '\.cpp ' | tsort >/dev/null 2>&1 ||
    finding "headers include each other in a circle"

exit $failed
