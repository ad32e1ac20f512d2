# Completes the programs of Kvo from their own --help, so that the two cannot drift.
_kvo_complete()
{
    local words=() word i
    for ((i = 0; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        # The commands on the way, without options and their values.
        if [[ $i -eq 0 || $word =~ ^[a-z][a-z-]*$ ]]; then
            words+=("$word")
        fi
    done
    local current=${COMP_WORDS[COMP_CWORD]}
    if [[ ${COMP_WORDS[COMP_CWORD - 1]} == --* && $current != -* ]]; then
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        return
    fi
    local offered
    # A command's line begins with two blanks and its name, an option's holds its long name.
    offered=$("${words[@]}" --help 2>/dev/null | grep -oE -- '--[a-z][a-z-]+|^  [a-z][a-z-]+' | sort -u)
    mapfile -t COMPREPLY < <(compgen -W "$offered" -f -- "$current")
}
complete -F _kvo_complete kvo-till kvo-window loyalty-sim fault-proxy
