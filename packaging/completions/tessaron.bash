# shellcheck shell=bash
# Completion of the command tessaron for bash.

_tessaron_options() {
    case $1 in
    image)
        echo "-o --output --split --format -n --name --filesystems --relocate --strict --no-sync --progress --json -q --quiet -v" \
            "--verbose -h --help --version"
        ;;
    audio)
        echo "-o --output --format --data -n --name --gap --no-gapless --capacity --normalize --normalize-each --cd-text" \
            "--isrc --no-sync --progress --json -q --quiet -v --verbose -h --help --version"
        ;;
    inspect) echo "--json -h --help --version" ;;
    verify) echo "--filesystems --progress --json -q --quiet -v --verbose -h --help --version" ;;
    scan) echo "--progress --json -q --quiet -v --verbose -h --help --version" ;;
    tracks) echo "--json -h --help --version" ;;
    extract)
        echo "--track --files --filesystem -o --output --format --hidden --no-sync --progress --json -q --quiet -h" \
            "--help --version"
        ;;
    convert)
        echo "--to --vbr --cbr -d --directory --flat --tags -j --jobs --progress --json -q --quiet -v --verbose -h --help" \
            "--version"
        ;;
    drives) echo "--media --json -h --help --version" ;;
    burn)
        echo "--drive --speed --simulate --multi --overburn --audio --verify --eject -n --name --filesystems --relocate" \
            "--strict --gap --no-gapless --normalize --normalize-each --cd-text --isrc --progress --json -q --quiet -v --verbose -h --help --version"
        ;;
    blank) echo "--drive --full --format --eject --progress --json -q --quiet -h --help --version" ;;
    dvd) echo "--play --title --chapter --json -h --help --version" ;;
    info) echo "--artwork --json -h --help --version" ;;
    *) echo "-h --help --version" ;;
    esac
}

# The values of an option of a command; nothing for one that takes a file or free text.
_tessaron_values() {
    case $1 in
    --format)
        case $2 in
        extract) echo "wav flac" ;;
        audio) echo "bin vant" ;;
        blank) ;;
        *) echo "iso bin vant" ;;
        esac
        ;;
    --speed) echo "2 4 8 16 24 48" ;;
    --capacity) echo "74 80 90 99" ;;
    --filesystems) echo "iso9660,joliet,udf,hfs+ iso9660,joliet iso9660,udf iso9660 joliet udf hfs+" ;;
    --filesystem) echo "rockridge udf hfs+ joliet iso9660" ;;
    --progress) echo "auto bar json none" ;;
    --track) echo "all" ;;
    --split) echo "cd dvd dvd-dl bd bd-dl" ;;
    --to) echo "wav aiff mp3" ;;
    --vbr | --cbr) echo "128 160" ;;
    esac
}

_tessaron_complete_paths() {
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$1")
}

_tessaron() {
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command='' values
    COMPREPLY=()
    ((COMP_CWORD > 1)) && command=${COMP_WORDS[1]}

    # "=" is a word of its own for readline: --format=i are three words.
    if [[ $word == "=" ]]; then
        word=
    elif [[ $previous == "=" ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi

    values=$(_tessaron_values "$previous" "$command")
    if [[ -n $values ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$values" -- "$word")
    elif [[ $previous == @(-n|--name|--gap|-j|--jobs|--title|--chapter) ]]; then
        return
    elif [[ $previous == --drive || ($command == drives && $word != -*) ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -G "${word:-/dev/sr}*")
    elif [[ $previous == @(-o|--output|--isrc) ]]; then
        _tessaron_complete_paths "$word"
    elif [[ $previous == @(-d|--directory|--artwork|--data) ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -d -- "$word")
    elif [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_tessaron_options "$command")" -- "$word")
    elif ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W "help audio image inspect scan verify tracks extract convert info dvd drives burn blank" -- "$word")
    elif [[ $command == help ]]; then
        mapfile -t COMPREPLY < <(compgen -W "audio image inspect scan verify tracks extract convert info dvd drives burn blank" -- "$word")
    else
        _tessaron_complete_paths "$word"
    fi
}

complete -F _tessaron tessaron
