# bash completion for vostel                                                       -*- shell-script -*-
# Needs nothing but bash itself.

_vostel_files() {
    # Names with blanks are quoted by readline, folders get their slash.
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen "$1" -- "$cur")
}

# The values of an option, on their own or after "--option=".
_vostel_value() {
    case $1 in
        --bar) COMPREPLY=($(compgen -W "auto dock tray offscreen" -- "$cur")) ;;
        --module) COMPREPLY=($(compgen -W "network cpu memory gpu combined" -- "$cur")) ;;
        --scale) COMPREPLY=($(compgen -W "1 1.25 1.5 2 3 4" -- "$cur")) ;;
        --appearance) COMPREPLY=($(compgen -W "dark light" -- "$cur")) ;;
        --image) _vostel_files -f ;;
        --out) _vostel_files -d ;;
        *) return 1 ;;
    esac
}

_vostel() {
    local cur=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local command=${COMP_WORDS[1]} options
    COMPREPLY=()
    # bash takes "--bar=dock" for three words, unless "=" was taken out of COMP_WORDBREAKS.
    if [[ $cur == = ]]; then
        cur=
        _vostel_value "$previous"
        return 0
    elif [[ $previous == = ]]; then
        _vostel_value "${COMP_WORDS[COMP_CWORD - 2]}"
        return 0
    elif [[ $cur == --*=* ]]; then
        local option=${cur%%=*}
        cur=${cur#*=}
        _vostel_value "$option" && COMPREPLY=("${COMPREPLY[@]/#/$option=}")
        return 0
    elif _vostel_value "$previous"; then
        return 0
    fi
    if ((COMP_CWORD == 1)) && [[ $cur != -* ]]; then
        COMPREPLY=($(compgen -W "snapshot status export import" -- "$cur"))
        return 0
    fi
    ((COMP_CWORD > 1)) || command=
    case $command in
        snapshot) options="--out= --module= --scale= --appearance= --after= --help" ;;
        status) options="--json --help" ;;
        export) options="--help" ;;
        import) options="--yes --help" ;;
        *) options="--bar= --image= --version --help" ;;
    esac
    if [[ $cur != -* && ($command == export || $command == import) ]]; then
        _vostel_files -f
        return 0
    fi
    COMPREPLY=($(compgen -W "$options" -- "$cur"))
    # No blank after "--bar=": the value follows.
    [[ ${COMPREPLY[0]-} == *= ]] && compopt -o nospace 2>/dev/null
    return 0
}
complete -F _vostel vostel
