# Completion of pelvan7's commands and options for bash, taken from what --help says.
_pelvan7() {
    local word=${COMP_WORDS[COMP_CWORD]} path=() help i
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in
            --directory) ((i++)) ;;
            -*) break ;;
            *) path+=("${COMP_WORDS[i]}") ;;
        esac
    done
    help=$("${COMP_WORDS[0]}" "${path[@]}" --help 2>/dev/null) || help=
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(grep -oE -- '--[a-z][a-z-]*' <<<"$help" | sort -u)" -- "$word")
        return
    fi
    mapfile -t COMPREPLY < <(compgen -W "$(sed -n '/^Subcommands:/,$ s/^  \([a-z][a-z-]*\) .*/\1/p' <<<"$help")" -- "$word")
    ((${#COMPREPLY[@]})) || compopt -o default 2>/dev/null
}
complete -F _pelvan7 pelvan7
