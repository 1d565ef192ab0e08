#!/bin/sh
# Makes from the help of brevikctl its manual page or its completion for bash:
#   tool_help.sh manual|completion TOOL VERSION
set -eu
form=$1
tool=$2
version=$3

# The names after "Subcommands:" of a help text.
subcommands() { awk '/^Subcommands:/ { on = 1; next } /^$/ { on = 0 } on { print $1 }'; }

# Runs `$1 COMMAND...` for every command, a group before those in it.
each_command() {
    visit=$1
    for group in $("$tool" --help | subcommands); do
        $visit "$group"
        for command in $("$tool" "$group" --help | subcommands); do
            $visit "$group" "$command"
        done
    done
}

# Turns a help text into manual page lines. A row is a term, two blanks or more, and what it means,
# which may stand on the next line; where all commands end with the same words, one names them.
format_help() {
    awk -v is_top="$1" '
        function plain(text) {
            gsub(/\\/, "\\e", text)
            gsub(/-/, "\\-", text)
            return text ~ /^[.'\'']/ ? "\\&" text : text
        }
        /^Usage: / { sub(/^Usage: /, ""); print ".PP\n.B " plain($0); next }
        /^(Options|Positionals):/ { rows = 1; next }
        /^Subcommands:/ { rows = 2; next }
        /^$/ { rows = 0; paragraph = 1; next }
        !is_top && (/^Exit codes: 0 done, 1 the command failed/ || /^BREVIK_MACHINE names/) { next }
        rows == 2 && !is_top { next }
        rows && /^          / { sub(/^ +/, ""); print plain($0); next }
        rows {
            sub(/^ +/, "")
            cut = match($0, /  +/)
            print ".TP\n.B " plain(cut ? substr($0, 1, cut - 1) : $0)
            if (cut) print plain(substr($0, cut + RLENGTH))
            next
        }
        { if (paragraph) print ".PP"; paragraph = 0; print plain($0) }'
}

manual_of() {
    printf '.SS %s\n' "$*"
    "$tool" "$@" --help | format_help ''
}

manual() {
    printf '.TH BREVIKCTL 1 "" "brevikctl %s"\n' "$version"
    printf '.SH NAME\nbrevikctl \\- inspects and repairs a machine of brevikconfig\n'
    printf '.SH DESCRIPTION\n'
    "$tool" --help | format_help 1
    printf '.SH COMMANDS\n'
    each_command manual_of
}

# One line of a case: the words that may follow a command.
completion_of() {
    help=$("$tool" "$@" --help)
    words=$({
        printf '%s\n' "$help" | subcommands
        printf '%s\n' "$help" | sed -n 's/^  \(-[^ ]*\).*/\1/p' | tr , '\n'
    } | tr '\n' ' ')
    printf '    "%s") words="%s" ;;\n' "$*" "${words% }"
}

completion() {
    cat <<'TEXT'
# Completion of brevikctl for bash.
_brevikctl() {
    local current=${COMP_WORDS[COMP_CWORD]} command= word words
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        [[ $word == -* ]] && break
        command+=${command:+ }$word
    done
    # Behind the command stand its arguments.
    while :; do
        words=
        case $command in
TEXT
    completion_of | sed 's/^/    /'
    each_command completion_of | sed 's/^/    /'
    cat <<'TEXT'
        esac
        [[ -n $words || $command != *\ * ]] && break
        command=${command% *}
    done
    COMPREPLY=($(compgen -W "$words" -- "$current"))
}
complete -o default -F _brevikctl brevikctl
TEXT
}

case $form in
manual) manual ;;
completion) completion ;;
esac
