# The words of ostra, for bash.

# Offers those of the lines read that begin with the word, quoted as the word is: names of profiles have spaces and
# parentheses.
_ostra_offer() {
  local line quote= plain=${cur//\\/}
  case $cur in
    \"* | \'*) quote=${cur:0:1} plain=${cur:1} ;;
  esac
  while IFS= read -r line; do
    [[ -n $line && $line == "$plain"* ]] || continue
    [[ -n $quote ]] || printf -v line %q "$line"
    COMPREPLY+=("$line")
  done
}

# Files whose names look like pictures and, where there are none, any: what a picture is, its bytes say.
_ostra_pictures() {
  local extensions
  extensions=$("$1" formats 2>/dev/null | cut -f 3 | tr -s ' \n' '|')
  _filedir "@(${extensions%|})"
  [[ ${#COMPREPLY[@]} -gt 0 ]] || _filedir
}

_ostra() {
  local cur prev words cword split
  _init_completion -s -n : || return

  local i action= bundle= names=
  for ((i = 1; i < cword; ++i)); do
    case ${words[i]} in
      --) names=yes ;;
      --bundle | --bundle=*) [[ -n $names ]] || bundle=yes ;;&
      --profile | --files-from | --ui | --bundle) [[ -n $names ]] || ((++i)) ;;
      -*) ;;
      *) [[ -n $action ]] || action=${words[i]} ;;
    esac
  done

  if [[ -z $names ]]; then
    case $prev in
      --profile)
        _ostra_offer < <("$1" profiles 2>/dev/null)
        __ltrim_colon_completions "$cur"
        return
        ;;
      --ui)
        _ostra_offer < <(printf '%s\n' auto desktop terminal none)
        return
        ;;
      --bundle)
        _filedir -d
        return
        ;;
      --files-from)
        _filedir
        return
        ;;
    esac
    [[ $split == false ]] || return
    if [[ $cur == -* ]]; then
      if [[ $action == integrate ]]; then
        _ostra_offer < <(printf '%s\n' --dry-run --remove)
      else
        _ostra_offer < <(printf '%s\n' --bundle --files-from= --help --profile --ui= --verbose --version)
      fi
      [[ ${COMPREPLY[0]-} != *= ]] || compopt -o nospace
      return
    fi
  fi

  if [[ -z $action && -z $bundle ]]; then
    _ostra_offer < <("$1" list 2>/dev/null | sed 's/ .*//'; printf '%s\n' formats integrate list profiles)
  elif [[ $action != @(formats|integrate|list|profiles) || -n $bundle ]]; then
    _ostra_pictures "$1"
  fi
} &&
  complete -F _ostra ostra
