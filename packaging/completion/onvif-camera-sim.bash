# Completion of onvif-camera-sim in bash: the words that the program's own help names
# for what has been typed so far.
_onvif_camera_sim() {
  local current=${COMP_WORDS[COMP_CWORD]} word typed=()
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    [[ $word == -* ]] || typed+=("$word")
  done
  mapfile -t COMPREPLY < <(compgen -W "$("$1" "${typed[@]}" --help 2>/dev/null |
    sed -n -e '/^Options:/,/^$/s/^  \(-[a-z],\)\{0,1\}\(--[a-z0-9-]*\).*/\2/p' \
      -e '/^Subcommands:/,/^$/s/^  \([a-z][a-z-]*\).*/\1/p')" -- "$current")
}
complete -o default -F _onvif_camera_sim onvif-camera-sim
