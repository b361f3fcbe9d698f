# Completion for bash: the tool itself knows its verbs, options and names of formats. Where it has
# nothing to offer, names of files are completed.
_tarn() {
    COMPREPLY=()
    local candidate
    while read -r candidate; do
        COMPREPLY+=("$candidate")
    done < <("$1" --complete "${COMP_WORDS[@]:0:COMP_CWORD+1}" 2>/dev/null)
}
complete -o default -o bashdefault -F _tarn tarn
