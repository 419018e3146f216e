# bash completion for drevixctl. The program computes the completions; this asks it and quotes the answer.

_drevixctl() {
    local cur prev words cword split
    _init_completion -s -n : || return # "NAME:SIGNATURE" is one word

    # "--app=NAME" is one word for the shell and two for us.
    local -a typed=("${words[@]:1:cword-1}")
    if [[ $split == true ]]; then
        typed+=("$prev")
    fi
    local -a offered
    mapfile -t offered < <("${words[0]}" __complete "${typed[@]}" "$cur" 2>/dev/null)
    if [[ ${offered[0]-} == : ]]; then
        _filedir
        return
    fi

    # What is typed may be quoted already; readline closes an open quote, and wants words inside one as they are.
    local plain=${cur//\\/} quote=
    if [[ $plain == [\"\']* ]]; then
        quote=${plain:0:1}
        plain=${plain:1}
    fi
    local word
    COMPREPLY=()
    for word in "${offered[@]}"; do
        [[ $word == "$plain"* ]] || continue
        if [[ -z $quote ]]; then
            printf -v word '%q' "$word"
        fi
        COMPREPLY+=("$word")
    done
    __ltrim_colon_completions "$cur"
} &&
    complete -F _drevixctl drevixctl
