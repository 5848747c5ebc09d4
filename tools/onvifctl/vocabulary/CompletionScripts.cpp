#include <map>

#include "vocabulary/Completion.h"

namespace onvifctl {

namespace {

// In bash a word that readline takes for the current one begins behind the last colon.
constexpr const char* kBash = R"(# Completion of onvifctl in bash.
_onvifctl() {
  local line=${COMP_LINE:0:COMP_POINT} typed each
  read -a typed <<<"$line"
  [[ $line != *[[:space:]] || $line == *\\[[:space:]] ]] || typed+=("")
  local current=${typed[-1]} found=()
  mapfile -t found < <("$1" completion --words "${typed[@]:1}" 2>/dev/null)
  COMPREPLY=()
  for each in "${found[@]}"; do
    if [[ $current == *:* && $COMP_WORDBREAKS == *:* ]]; then
      each=${each#"${current%"${current##*:}"}"}
    fi
    [[ $each != *[[:space:]]* ]] || printf -v each %q "$each"
    COMPREPLY+=("$each")
  done
}
complete -o default -F _onvifctl onvifctl
)";

constexpr const char* kZsh = R"(#compdef onvifctl
# Completion of onvifctl in zsh.
_onvifctl() {
  local -a found
  found=("${(@f)$("${words[1]}" completion --words "${(@Q)words[2,CURRENT]}" 2>/dev/null)}")
  if [[ -n ${found[1]} ]]; then
    compadd -- "${found[@]}"
  else
    _files
  fi
}
if [[ ${funcstack[1]} == _onvifctl ]]; then
  _onvifctl "$@"
else
  compdef _onvifctl onvifctl
fi
)";

constexpr const char* kFish = R"(# Completion of onvifctl in fish.
function __onvifctl_words
    set -l typed (commandline -opc)
    set -l current (commandline -ct)
    set -l program $typed[1]
    set -e typed[1]
    $program completion --words $typed "$current" 2>/dev/null
end
complete -c onvifctl -a '(__onvifctl_words)'
)";

}  // namespace

std::string CompletionScript(const std::string& shell) {
    static const std::map<std::string, const char*> kScripts = {
        {"bash", kBash}, {"fish", kFish}, {"zsh", kZsh}};
    return kScripts.at(shell);
}

}  // namespace onvifctl
