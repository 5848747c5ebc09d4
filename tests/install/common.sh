# What the tests of the installed library and of the packages share; they source this file. Needs
# $source, the project's folder; leaves $work, a folder that goes at the end.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "$*" >&2
  exit 1
}

# quietly COMMAND...: shows what the command says only if it fails.
quietly() {
  "$@" >"$work/log" 2>&1 || { cat "$work/log"; fail "failed: $*"; }
}

# start_camera PROGRAM...: leaves host, port, user and password of FirstProgram.cpp in $camera. The
# camera lives as long as this script's end of the pipe.
start_camera() {
  coproc CAMERA { exec "$@" --exit-with-stdin --user admin --password secret; }
  local line
  read -r -t 60 line <&"${CAMERA[0]}" || fail "no camera"
  line=${line%$'\r'}
  address=${line##* }
  camera=("${address%:*}" "${address##*:}" admin secret)
}

# greets PROGRAM...: the program logs in to the camera and shows what it says about itself.
greets() {
  "$@" "${camera[@]}" >"$work/said" 2>"$work/log" </dev/null ||
    { cat "$work/log"; fail "failed: $*"; }
  grep -q '<devInfo>' "$work/said" || fail "$1 does not show the camera"
}
