# Sourced by ./run and ./test: installs what is missing from Debian, configures and builds.
# Needs $top, the repository's root.

packages_to_build=(g++ cmake ninja-build ccache pkg-config xz-utils qt6-base-dev qt6-svg-dev libsqlite3-dev libicu-dev
  dbus fonts-ipafont-gothic tzdata)
packages_to_test=(xvfb xauth binutils)

# missing_packages NAME...: those of them that are not installed, a line each.
missing_packages() {
  local name
  for name; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null)" = installed ] || echo "$name"
  done
}

# as_root COMMAND...: with sudo where the user is not root; never asks without a terminal.
as_root() {
  if [ "$(id -u)" = 0 ]; then "$@"
  elif [ -t 0 ]; then sudo "$@"
  else sudo -n "$@"; fi
}

# install_packages NAME...: does nothing, and needs no network, when all are there.
install_packages() {
  local missing
  mapfile -t missing < <(missing_packages "$@")
  [ ${#missing[@]} -gt 0 ] || return 0
  echo "Installing from Debian: ${missing[*]}"
  if ! { as_root apt-get update -q &&
         as_root env DEBIAN_FRONTEND=noninteractive apt-get install -yq --no-install-recommends "${missing[@]}"; } \
       >"$log" 2>&1; then
    tail -n 15 "$log" >&2
    echo "These packages are missing and could not be installed: ${missing[*]}" >&2
    echo "As root: apt-get install --no-install-recommends ${missing[*]}" >&2
    return 1
  fi
}

# configure PRESET [cmake options...]
configure() {
  local preset=$1
  shift
  (cd "$top" && cmake --preset "$preset" "$@") >"$log" 2>&1 || { cat "$log" >&2; return 1; }
}

# build PRESET [targets...]
build() {
  local preset=$1 targets=()
  shift
  [ $# -eq 0 ] || targets=(--target "$@")
  echo "Building ($preset)"
  (cd "$top" && cmake --build --preset "$preset" "${targets[@]}") >"$log" 2>&1 || { tail -n 60 "$log" >&2; return 1; }
}

mkdir -p "$top/build"
log=$top/build/setup.log
