# Completion of lumora(1) for fish.

set -g __lumora_formats bmp dcx iff jp2 jpg jpeg mbm mbm_comp pbm pcx pgm png png_inter ppm psd rgb tga tga_comp tif tiff \
    tif_jpeg wbmp xbm xpm xwd
set -g __lumora_operations autocontrast autolevel grayscale colors256 emboss

# The words of a list with commas: what stands before the last comma is kept, and no word is offered twice.
function __lumora_list
    set -l word (string replace -r '^--[a-z-]+=' '' -- (commandline -ct))
    set -l chosen (string match -r '^.*,' -- $word)
    for candidate in $argv
        contains -- $candidate (string split -- , "$chosen"); or echo "$chosen$candidate"
    end
end

function __lumora_converts
    string match -qr -- '^--convert(=.*)?$' (commandline -opc)
end

function __lumora_shows
    not __lumora_converts
end

function __lumora_may_convert
    not string match -qr -- '^(/|--)(editor|folder|screenshot)(=.*)?$' (commandline -opc)
end

function __lumora_begins
    not string match -qr -- '^(/|--)(convert|editor|folder|screenshot)(=.*)?$' (commandline -opc)
end

complete -c lumora -n __lumora_begins -s h -l help -d 'Show the summary of the command line'
complete -c lumora -n __lumora_begins -s v -l version -d 'Show the version'
complete -c lumora -n __lumora_shows -l editor -d 'Start in the editor'
complete -c lumora -n __lumora_shows -l folder -d 'Start in the Browse Folder Viewer'
complete -c lumora -n __lumora_shows -l screenshot -r -F -d 'Write the window as a PNG file and end'
complete -c lumora -n __lumora_may_convert -l convert -x -a '(__lumora_list $__lumora_formats)' -d 'Write pictures in these formats'
complete -c lumora -n __lumora_converts -l to -x -a '(__fish_complete_directories)' -d 'Write into this folder'
complete -c lumora -n __lumora_converts -l operations -x -a '(__lumora_list $__lumora_operations)' -d 'Change the pictures before'
complete -c lumora -n __lumora_converts -l diffuse -d 'Spread the error where colours are reduced'
complete -c lumora -n __lumora_converts -l jpeg-quality -x -a '50 75 85 95 100' -d 'Quality of JPEG, 1 to 100'
complete -c lumora -n __lumora_converts -l jpeg2000-quality -x -a '50 75 85 95 100' -d 'Quality of JPEG 2000, 1 to 100'
complete -c lumora -n __lumora_converts -l photo-cd-size -x -a '0 1 2 3 4' -d 'Size of a Photo CD'
complete -c lumora -n __lumora_converts -l overwrite -d 'Replace files that are there already'
complete -c lumora -n __lumora_converts -l convert-folder -d 'Write into a folder convert below'
complete -c lumora -n __lumora_converts -l folder-per-type -d 'Write into a folder for each format below'
complete -c lumora -n __lumora_converts -l recursive -d 'Take folders with all that is below them'
complete -c lumora -n __lumora_converts -l progress -d 'Tell the progress also where standard error is no terminal'
