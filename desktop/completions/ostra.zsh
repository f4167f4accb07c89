#compdef ostra
# The words of ostra, for zsh.

_ostra_words() {
  if (( $+opt_args[--bundle] )); then
    _ostra_pictures
    return
  fi
  local -a actions commands
  # "srgb-jpg   Convert to sRGB .JPG"
  actions=(${(f)"$(_call_program actions ${(q)words[1]} list 2>/dev/null)"})
  actions=(${actions/ ##/:})
  commands=(
    'formats:list the formats of pictures'
    'integrate:put the actions into the menus of file managers'
    'list:list the actions'
    'profiles:list the profiles to choose from'
  )
  _describe -t actions action actions
  _describe -t commands command commands
}

_ostra_profiles() {
  local -a profiles
  profiles=(${(f)"$(_call_program profiles ${(q)words[1]} profiles 2>/dev/null)"})
  local expl
  _wanted profiles expl profile compadd -a profiles
}

# Files whose names look like pictures and, where there are none, any: what a picture is, its bytes say.
_ostra_pictures() {
  case $line[1] in
    formats|integrate|list|profiles) (( $+opt_args[--bundle] )) || return 1 ;;
  esac
  local -a extensions
  extensions=(${=${(f)"$(_call_program formats ${(q)words[1]} formats 2>/dev/null | cut -f 3)"}})
  _files -g "(#i)*.(${(j:|:)extensions})(-.)"
}

local curcontext="$curcontext" state line
typeset -A opt_args

_arguments -S \
  '(- *)--help[print what the words mean]' \
  '(- *)--version[print the version]' \
  '--bundle=[perform the action of a bundle]:bundle:_files -/' \
  '--dry-run[tell what integrate would do]' \
  '--files-from=[read further paths, separated by NUL]:file:_files' \
  '--profile=[answer convert-color-profile]:profile:_ostra_profiles' \
  '--remove[take away what integrate has written]' \
  '--ui=[where failures are shown and questions are put]:place:(auto desktop terminal none)' \
  '--verbose[write the lines of the log to standard error too]' \
  '1: :_ostra_words' \
  '*:picture:_ostra_pictures'
