# Completion of lumora(1) for bash.

_lumora_formats="bmp dcx iff jp2 jpg jpeg mbm mbm_comp pbm pcx pgm png png_inter ppm psd rgb tga tga_comp tif tiff tif_jpeg
    wbmp xbm xpm xwd"
_lumora_operations="autocontrast autolevel grayscale colors256 emboss"
_lumora_window_options="--editor --folder --screenshot"
_lumora_convert_options="--to --operations --diffuse --jpeg-quality --jpeg2000-quality --photo-cd-size --overwrite
    --convert-folder --folder-per-type --recursive --progress"
_lumora_plain_options="--help --version"

# A list with commas: what stands before the last comma is kept, and no word is offered twice.
_lumora_list()
{
    local done="" begun=${2##*,} word
    case $2 in *,*) done=${2%,*}, ;; esac
    for word in $1; do
        case ,$done in *,"$word",*) continue ;; esac
        case $word in "$begun"*) COMPREPLY+=("$done$word") ;; esac
    done
    compopt -o nospace 2> /dev/null
}

_lumora_files()
{
    local IFS=$'\n'
    compopt -o filenames 2> /dev/null
    # shellcheck disable=SC2207 # one name a line; mapfile would keep an empty one
    COMPREPLY=($(compgen "$1" -- "$2"))
}

_lumora_words()
{
    # shellcheck disable=SC2207 # the words are the program's own and hold no blank
    COMPREPLY=($(compgen -W "$1" -- "$2"))
}

_lumora()
{
    local word=${COMP_WORDS[COMP_CWORD]} before="" index converts="" window="" ended=""
    COMPREPLY=()
    [ "$COMP_CWORD" -eq 0 ] || before=${COMP_WORDS[COMP_CWORD - 1]}
    # bash takes --to=FOLDER apart at the equals sign.
    if [ "$word" = "=" ]; then
        word=""
    elif [ "$before" = "=" ] && [ "$COMP_CWORD" -ge 2 ]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for ((index = 1; index < COMP_CWORD; ++index)); do
        case ${COMP_WORDS[index]} in
        --) ended=1; break ;;
        --convert) converts=1 ;;
        --editor | --folder | /editor | /folder | --screenshot) window=1 ;;
        esac
    done
    if [ -z "$ended" ]; then
        case $before in
        --convert) _lumora_list "$_lumora_formats" "$word"; return ;;
        --operations) _lumora_list "$_lumora_operations" "$word"; return ;;
        --to) _lumora_files -d "$word"; return ;;
        --screenshot) _lumora_files -f "$word"; return ;;
        --photo-cd-size) _lumora_words "0 1 2 3 4" "$word"; return ;;
        --jpeg-quality | --jpeg2000-quality) _lumora_words "50 75 85 95 100" "$word"; return ;;
        esac
        if [[ $word == -* ]]; then
            if [ -n "$converts" ]; then
                _lumora_words "$_lumora_convert_options" "$word"
            elif [ -n "$window" ]; then
                _lumora_words "$_lumora_window_options" "$word"
            else
                _lumora_words "--convert $_lumora_window_options $_lumora_plain_options" "$word"
            fi
            return
        fi
    fi
    _lumora_files -f "$word"
}

complete -F _lumora lumora
