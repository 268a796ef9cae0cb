# SPDX-License-Identifier: MIT
# Sourced by ./tour, ./check and the other scripts: what they share. Installs what the build needs, and builds a preset.

# The one package list, by release: compilers and tools first, then the libraries.
packages=(
  g++ cmake ninja-build make ccache
  binutils pkg-config abigail-tools locales python3 tzdata zip gdb
  libwxgtk3.2-dev libpcre2-dev libicu-dev zlib1g-dev libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth
)
release=$(. /etc/os-release 2>/dev/null && echo "${VERSION_CODENAME:-}") || true
case $release in
  bookworm) packages+=(clang-14 libclang-rt-14-dev clang-format-14 libpcre3-dev) ;;
  *) packages+=(clang-19 libclang-rt-19-dev tzdata-legacy) ;;
esac

# usage <text>: says how the script is called, and ends it.
usage() {
  echo "usage: $1" >&2
  exit 2
}

# need_built <file>: ends the script unless the file is there.
need_built() {
  [ -f "$1" ] || { echo "$1 is missing: build it first" >&2; exit 2; }
}

install_line="apt-get install --no-install-recommends -y ${packages[*]}"

# missing_packages <package>...: those of them that are not installed.
missing_packages() {
  local package
  for package in "$@"; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || echo "$package"
  done
}

# Installs the packages that are missing; with --no-install prints the line that would do it instead.
install_packages() {
  local missing
  if ! command -v dpkg-query >/dev/null; then
    echo "This is no Debian system; what is needed is what these packages hold: ${packages[*]}"
    return 0
  fi
  missing=$(missing_packages "${packages[@]}")
  if [ "${1:-}" = --no-install ]; then
    echo "$install_line"
    if [ -n "$missing" ]; then
      echo "Not installed:" $missing >&2
      exit 1
    fi
    return 0
  fi
  install_missing $missing
}

# need_packages <package>...: installs, of what a script on demand needs beyond the list, that which is missing.
need_packages() {
  if command -v dpkg-query >/dev/null; then
    # shellcheck disable=SC2046
    install_missing $(missing_packages "$@")
  fi
}

# need_commands <command>...: ends the script, saying which is missing, unless all are there. Their packages have their names.
need_commands() {
  local command
  for command in "$@"; do
    command -v "$command" >/dev/null || { echo "$command is missing: in Debian it is the package $command" >&2; exit 2; }
  done
}

install_missing() {
  [ $# != 0 ] || return 0
  local as_root=()
  if [ "$(id -u)" != 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "Packages are missing, and only root can install them; sudo is not there. As root, run:" >&2
      echo "apt-get install --no-install-recommends -y $*" >&2
      exit 1
    fi
    as_root=(sudo)
  fi
  echo "Installing:" "$@"
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install --no-install-recommends -y -qq "$@" >/dev/null
}

# build_preset <preset> [target...]: configures on the first run, then builds only what changed. Quiet unless it fails.
build_preset() {
  local preset=$1 log
  shift
  log=$(mktemp)
  if ! { { [ -f "build/$preset/build.ninja" ] || cmake --preset "$preset"; } &&
         cmake --build --preset "$preset" --target "${@:-all}"; } >"$log" 2>&1; then
    cat "$log"
    rm -f "$log"
    exit 1
  fi
  rm -f "$log"
}

# timed <text> <command>...: runs it under a headline, and says how long it took.
timed() {
  local text=$1 start=$SECONDS
  shift
  echo "== $text =="
  "$@"
  echo "== $text: $(((SECONDS - start) / 60)) min $(((SECONDS - start) % 60)) s =="
}

# debian_mirror: where apt is told to get this release of Debian from.
debian_mirror() {
  apt-get indextargets --format '$(RELEASE) $(REPO_URI)' 'Created-By: Packages' | sed -n "s/^$release //p" | head -n 1
}
