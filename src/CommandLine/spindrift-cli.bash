# Completion of spindrift-cli's command line in bash.
_spindrift_cli() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command="" candidate
    local commands='status rip speed-test history nickname eject access settings'
    local options='--json --practice --help --version'
    for candidate in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        if [[ " $commands " == *" $candidate "* ]]; then
            command=$candidate
            break
        fi
    done
    [[ $command == rip ]] && options+=' --output --thorough --eject --force'
    # The line editor makes three words of "--output=name".
    if [[ $word == = ]]; then
        word=
    elif [[ $before == = ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi

    COMPREPLY=()
    case $before in
        --output | -o)
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            compopt -o filenames 2>/dev/null
            return
            ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    elif [[ -z $command ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$word")
    elif [[ $command == settings ]]; then
        local keys='ejectWhenDone thoroughVerify retroMode hasCompletedOnboarding'
        [[ " $keys " == *" $before "* ]] && keys='true false'
        mapfile -t COMPREPLY < <(compgen -W "$keys" -- "$word")
    fi
    if [[ $before == --practice ]]; then
        local images
        mapfile -t images < <(compgen -f -- "$word")
        COMPREPLY+=("${images[@]}")
        compopt -o filenames 2>/dev/null
    fi
}
complete -F _spindrift_cli spindrift-cli
