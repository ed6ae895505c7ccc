# Completion of quorvanectl in bash. It asks the program for its commands and options, so it never
# knows more or fewer than there are.

# The commands, a line each: family and name. Of a command without a family the name is empty: in its
# example an option comes next.
_quorvanectl_commands() {
    "$1" --help 2>/dev/null | sed -n 's/^    \$ quorvanectl \([a-z-]*\) \([a-z]*\).*/\1 \2/p'
}

# The help of one command, without its line breaks.
_quorvanectl_help() {
    "$1" "$2" ${3:+"$3"} --help 2>/dev/null | tr -s '\n ' ' '
}

_quorvanectl() {
    local program=$1 word=$2 previous=$3 family=${COMP_WORDS[1]} command=${COMP_WORDS[2]} words
    local place=$COMP_CWORD
    COMPREPLY=()
    if ((place > 1)) && _quorvanectl_commands "$program" | grep -qx "$family "; then
        command='' place=3
    fi
    case $place in
    1) words="$(_quorvanectl_commands "$program" | cut -d ' ' -f 1 | sort -u) --help --version" ;;
    2) words="$(_quorvanectl_commands "$program" | sed -n "s/^$family //p") --help" ;;
    *)
        if [[ $previous == --format ]]; then
            words=$(_quorvanectl_help "$program" "$family" "$command" |
                sed -n 's/.*Form of the output: \(.*\) (default.*/\1/p' | tr -d ,)
        elif [[ $word == -* ]]; then
            words=$(_quorvanectl_help "$program" "$family" "$command" | grep -o -- ' --[a-z-]*' |
                sort -u)
        else
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            return
        fi
        ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}

complete -F _quorvanectl quorvanectl
