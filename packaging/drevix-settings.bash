# bash completion for drevix-settings and DrevixHelper. Their options are those that --help lists.

_drevix_settings() {
    local cur prev words cword split
    _init_completion -s || return
    if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_parse_help "$1")" -- "$cur")
    else
        _filedir
    fi
} &&
    complete -F _drevix_settings drevix-settings DrevixHelper
