# The words of ostra, for fish.

# Everything on the command line so far that is no option and no value of one, without the program.
function __ostra_words
    set -l skip no
    set -l names no
    for word in (commandline -opc)[2..-1]
        if test $skip = yes
            set skip no
        else if test $names = yes
            echo -- $word
        else
            switch $word
                case --
                    set names yes
                case --profile --files-from --ui
                    set skip yes
                case --bundle
                    set skip yes
                    echo bundle
                case '--bundle=*'
                    echo bundle
                case '-*'
                case '*'
                    echo -- $word
            end
        end
    end
end

function __ostra_wants_action
    test (count (__ostra_words)) -eq 0
end

function __ostra_wants_pictures
    set -l words (__ostra_words)
    test (count $words) -gt 0; and not contains -- $words[1] formats integrate list profiles
end

function __ostra_integrates
    contains -- integrate (__ostra_words)[1]
end

function __ostra_actions
    # "srgb-jpg   Convert to sRGB .JPG"
    ostra list 2>/dev/null | string replace -r ' +' \t
end

complete -c ostra -f
complete -c ostra -n __ostra_wants_action -a '(__ostra_actions)'
complete -c ostra -n __ostra_wants_action -a formats -d 'list the formats of pictures'
complete -c ostra -n __ostra_wants_action -a integrate -d 'put the actions into the menus of file managers'
complete -c ostra -n __ostra_wants_action -a list -d 'list the actions'
complete -c ostra -n __ostra_wants_action -a profiles -d 'list the profiles to choose from'
complete -c ostra -n __ostra_wants_pictures -F
complete -c ostra -n __ostra_integrates -l dry-run -d 'tell what would be written or removed'
complete -c ostra -n __ostra_integrates -l remove -d 'take away what was written'
complete -c ostra -l bundle -x -a '(__fish_complete_directories)' -d 'perform the action of a bundle'
complete -c ostra -l files-from -r -F -d 'read further paths, separated by NUL'
complete -c ostra -l profile -x -a '(ostra profiles 2>/dev/null)' -d 'answer convert-color-profile'
complete -c ostra -l ui -x -a 'auto desktop terminal none' -d 'where failures are shown and questions are put'
complete -c ostra -l verbose -d 'write the lines of the log to standard error too'
complete -c ostra -l version -d 'print the version'
complete -c ostra -l help -d 'print what the words mean'
