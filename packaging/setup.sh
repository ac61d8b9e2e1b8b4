# shellcheck shell=bash
# Sourced by ./run and ./test: installs the packages named in the files it is given, where some are
# missing. With apt-get, and sudo when not root; elsewhere it names the packages and goes on, so
# that a system that has them under other names still builds.

say() { printf '== %s\n' "$*"; }

install_packages() {
  local wanted missing=()
  wanted=$(cat "$@" | sed 's/#.*//')
  if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    say "This system has no apt-get. Needed, by their Debian names:" $wanted
    return 0
  fi
  local package
  for package in $wanted; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0

  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
      say "Missing packages, and no sudo to install them with: ${missing[*]}"
      return 1
    fi
    as_root=(sudo)
  fi
  say "Installing ${missing[*]}"
  "${as_root[@]}" apt-get update -qq || say "The package lists could not be refreshed; trying with the ones here"
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# quietly COMMAND…: shows what the command prints only when it fails. Leaves the summary of ctest, if
# there was one, in last_line.
quietly() {
  local log
  log=$(mktemp)
  if ! "$@" >"$log" 2>&1; then
    cat "$log"
    rm -f "$log"
    return 1
  fi
  last_line=$(grep 'tests passed' "$log" | tail -n 1 || true)
  rm -f "$log"
}

# build PRESET [TARGETS…]: everything when no targets are named.
build() {
  local preset=$1
  shift
  say "Building ($preset)"
  quietly cmake --preset "$preset" && quietly cmake --build --preset "$preset" ${1:+--target "$@"}
}

# start_building COMMAND…: lets the command build on what the tests that run meanwhile leave of the
# machine; most of them wait for sound and windows. What it has not done when stop_building ends it, or
# what failed, is left to the build that follows.
start_building() {
  setsid chrt --idle 0 "$@" >/dev/null 2>&1 &
  builder=$!
  trap stop_building EXIT
}

stop_building() {
  kill -TERM -- "-$builder" 2>/dev/null || true
  wait "$builder" 2>/dev/null || true
  trap - EXIT
}

# run_tests PRESET [CTEST ARGUMENTS…]
run_tests() {
  say "Testing ($1)"
  quietly ctest --parallel "$(nproc)" --preset "$@"
  say "$last_line"
}
