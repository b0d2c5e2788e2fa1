# Shared by ./demo, ./check and the scripts here: source it from the repository's root folder.
# shellcheck shell=bash

logs=build-logs

say() { printf '==> %s\n' "$*"; }

# step NAME TEXT COMMAND...: says the text, keeps what the command prints in a file, and shows its end when it fails.
step() {
  local log="$logs/$1.log"
  mkdir -p "$logs"
  say "$2"
  shift 2
  if ! "$@" >"$log" 2>&1 </dev/null; then
    tail -n 60 "$log" >&2
    say "Failed; all of it is in $log" >&2
    exit 1
  fi
}

# Under sudo only the packages are installed as root: what is built belongs to the owner of the folder.
leave_sudo() {
  if [ "$(id -u)" -eq 0 ] && [ "${SUDO_USER:-root}" != root ] && [ "$(stat -c %U .)" = "$SUDO_USER" ]; then
    exec sudo -u "$SUDO_USER" -- "$@"
  fi
}
