#!/bin/bash
# The manual page tells of every command, and the completion offers them: help.sh FOLDER
set -eu
fail() { echo "$*"; exit 1; }
page=$1/brevikctl.1
for line in '.SS certificate install' '.SS doctor' '.B \-\-language UINT REQUIRED' \
    '.SS registry set'; do
    grep -qxF -- "$line" "$page" || fail "the page lacks $line"
done
if command -v man >/dev/null; then
    warnings=$(MANWIDTH=80 man --warnings -l "$page" 2>&1 >/dev/null)
    [ -z "$warnings" ] || fail "$warnings"
fi

. "$1/brevikctl.bash"
# offers WANTED WORD...: the completions of a command line, of which the last word is begun
offers() {
    wanted=$1
    shift
    COMP_WORDS=(brevikctl "$@")
    COMP_CWORD=$#
    _brevikctl || true  # compgen fails where it finds nothing
    [ "${COMPREPLY[*]}" = "$wanted" ] || fail "brevikctl $*: offers '${COMPREPLY[*]}'"
}
offers 'database doctor' d
offers install certificate ins
offers '--language' certificate install one.qzc --la
offers '--json' doctor --j
offers '' nonsense x
