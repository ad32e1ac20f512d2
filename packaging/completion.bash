# Completes the programs of Kvo from their own --help, so that the two cannot drift.
_kvo_complete()
{
    local command=("$1") word help value
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        # A word is a command when the help so far lists it.
        if [[ $word != -* ]] && "${command[@]}" --help 2>/dev/null | grep -qE -- "^  $word +[A-Z]"; then
            command+=("$word")
        fi
    done
    help=$("${command[@]}" --help 2>/dev/null)
    # What follows an option that takes a value: one of its choices, or a file.
    if [[ $previous == --* && $help =~ (^|[ ,])"$previous "([A-Z]+(:[^ ]*)?) ]]; then
        value=${BASH_REMATCH[2]}
        if [[ $value =~ \{(.*)\} ]]; then
            mapfile -t COMPREPLY < <(compgen -W "${BASH_REMATCH[1]//,/ }" -- "$current")
        else
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
        fi
        return
    fi
    mapfile -t COMPREPLY < <(
        compgen -W "$(grep -oE -- '--[a-z][a-z-]+|^  [a-z][a-z-]+ ' <<<"$help" | sort -u)" -- "$current"
        [[ $help != *Positionals:* ]] || compgen -f -- "$current")
}
complete -o filenames -F _kvo_complete kvo-till kvo-window loyalty-sim fault-proxy
