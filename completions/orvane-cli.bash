# bash completion for orvane-cli

# The names in the file of export profiles, one on each line.
_orvane_cli_profiles() {
  local data=$HOME/.local/share
  [[ ${XDG_DATA_HOME-} == /* ]] && data=$XDG_DATA_HOME
  [[ $OSTYPE == darwin* ]] && data="$HOME/Library/Application Support"
  local string
  # What JSON escapes, %b knows too, but for quote and slash.
  grep -oE '"name"[[:space:]]*:[[:space:]]*"([^"\\]|\\.)*"' "$data/Orvane/exportProfiles.json" 2>/dev/null |
    sed -E 's|^"name"[[:space:]]*:[[:space:]]*"(.*)"$|\1|; s/\\(["/])|(\\\\)/\1\2/g' |
    while IFS= read -r string; do printf '%b\n' "$string"; done
}

# Completes a profile name in any letter case, as it must be typed.
_orvane_cli_complete_profile() {
  local word=$1 quote='' name typed
  [[ $word == [\'\"]* ]] && quote=${word:0:1} word=${word:1}
  while IFS= read -r name; do
    typed=$name
    [[ $quote ]] || printf -v typed %q "$name"
    [[ ${typed,,} == "${word,,}"* ]] && COMPREPLY+=("$typed")
  done < <(_orvane_cli_profiles)
}

_orvane_cli() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local options='--quality --format --output'
  COMPREPLY=()
  case $previous in
    --format) COMPREPLY=($(compgen -W 'png jpeg heic avif webp jxl' -- "$word")) ;;
    --output) compopt -o dirnames ;;
    --profile | --create-profile) _orvane_cli_complete_profile "$word" ;;
    --quality | --jobs) ;;
    *)
      if [[ ${COMP_WORDS[1]} != --create-profile ]]; then
        options+=' --profile --jobs --json --help'
        ((COMP_CWORD == 1)) && options+=' --create-profile'
        [[ $word == -* ]] || compopt -o default
      fi
      [[ $word == -* ]] && COMPREPLY=($(compgen -W "$options" -- "$word"))
      ;;
  esac
}

complete -F _orvane_cli orvane-cli
