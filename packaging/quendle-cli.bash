# bash completion for quendle-cli: commands (read from the program's own usage text, so
# new commands complete without changes here), options, station names in --journey
# (after each "|") and in "journey set", files after "table check", pictures after
# "render", feeds and options after "import-gtfs", --fetch after "trackwork", and folders,
# tables and options after "publish".

_quendle_cli_commands()
{
    "$1" --help 2>/dev/null | sed -n '/^Commands:/,/^$/s/^  \([a-z][a-z-]*\).*/\1/p'
}

# Completes the station after the last "|" of a journey text, keeping what comes
# before it; an unquoted start gets a double quote, since names hold blanks.
_quendle_cli_stations()
{
    local cli=$1 part=$2 quote='"' base='' name
    if [[ $part == [\"\']* ]]; then
        quote=${part:0:1}
        part=${part:1}
    fi
    if [[ $part == *'|'* ]]; then
        base=${part%'|'*}'|'
        part=${part##*'|'}
    fi
    COMPREPLY=()
    while IFS= read -r name; do
        [[ $name == "$part"* ]] && COMPREPLY+=("$quote$base$name")
    done < <("$cli" stations 2>/dev/null)
    compopt -o nospace 2>/dev/null
    return 0
}

_quendle_cli()
{
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} cli=${COMP_WORDS[0]}
    COMPREPLY=()
    case $prev in
        --now)
            COMPREPLY=($(compgen -W "$(date +%Y-%m-%dT%H:%M:00 2>/dev/null)" -- "$cur"))
            return 0
            ;;
        --journey)
            _quendle_cli_stations "$cli" "$cur"
            return 0
            ;;
    esac
    local i cmd=''
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in
            --now | --journey) ((i++)) ;;
            -*) ;;
            *) cmd=${COMP_WORDS[i]}; break ;;
        esac
    done
    if [[ $cmd == table ]]; then
        if ((COMP_CWORD == i + 1)); then
            COMPREPLY=($(compgen -W check -- "$cur"))
        else
            compopt -o filenames 2>/dev/null
            COMPREPLY=($(compgen -f -- "$cur"))
        fi
        return 0
    fi
    if [[ $cmd == render ]]; then
        if [[ $prev == --width ]]; then
            return 0
        elif [[ $cur == -* ]]; then
            COMPREPLY=($(compgen -W '--zoomed-out --width' -- "$cur"))
        else
            compopt -o filenames 2>/dev/null
            COMPREPLY=($(compgen -f -X '!*.png' -- "$cur") $(compgen -d -- "$cur"))
        fi
        return 0
    fi
    if [[ $cmd == journey ]]; then
        if ((COMP_CWORD == i + 1)); then
            COMPREPLY=($(compgen -W set -- "$cur"))
        elif ((COMP_CWORD == i + 2)) && [[ $prev == set ]]; then
            _quendle_cli_stations "$cli" "$cur"
        fi
        return 0
    fi
    if [[ $cmd == import-gtfs ]]; then
        case $prev in
            --name | --week | --route-type | --routes) return 0 ;;
        esac
        if [[ $cur == -* ]]; then
            COMPREPLY=($(compgen -W '--out --name --week --route-type --routes' -- "$cur"))
        else
            compopt -o filenames 2>/dev/null
            COMPREPLY=($(compgen -f -- "$cur"))
        fi
        return 0
    fi
    if [[ $cmd == publish ]]; then
        if [[ $prev == --version ]]; then
            return 0
        elif [[ $cur == -* ]]; then
            COMPREPLY=($(compgen -W '--table --version' -- "$cur"))
        elif [[ $prev == --table ]]; then
            compopt -o filenames 2>/dev/null
            COMPREPLY=($(compgen -f -X '!*.vq' -- "$cur") $(compgen -d -- "$cur"))
        else
            compopt -o filenames 2>/dev/null
            COMPREPLY=($(compgen -d -- "$cur"))
        fi
        return 0
    fi
    if [[ $cmd == trackwork ]]; then
        ((COMP_CWORD == i + 1)) && COMPREPLY=($(compgen -W --fetch -- "$cur"))
        return 0
    fi
    [[ -n $cmd ]] && return 0
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W '--now --journey --help --version' -- "$cur"))
    else
        COMPREPLY=($(compgen -W "$(_quendle_cli_commands "$cli")" -- "$cur"))
    fi
    return 0
}

complete -F _quendle_cli quendle-cli
