# Shared by the scripts of this folder, which source it. Leaves the shell in the checkout's top folder.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() { printf '%s\n' "$*" >&2; }

# as_root COMMAND…: runs it as root, by sudo unless we are; says so and fails where there is none.
as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    say "Only root can do that, and there is no sudo: $*"
    return 1
  fi
}

# install_packages build [test] [lint]: installs what is missing of these rows of packages.txt. What
# another installed package provides is not missing.
install_packages() {
  local missing=() purpose package installed
  installed=$(dpkg-query -W -f='${db:Status-Status} ${Package}, ${Provides},\n' |
    sed -n 's/^installed / /p' | sed 's/ ([^)]*)//g')
  while read -r purpose package; do
    case " $* " in *" $purpose "*) ;; *) continue ;; esac
    case $installed in *" $package,"*) ;; *) missing+=("$package") ;; esac
  done < <(grep -v '^#' script/packages.txt)
  [ ${#missing[@]} -eq 0 ] && return
  say "Installing ${missing[*]}"
  mkdir -p build
  [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null ||
    { say "Only root can install packages: run script/setup as root once."; return 1; }
  { as_root apt-get update &&
    as_root env DEBIAN_FRONTEND=noninteractive \
      apt-get install -y --no-install-recommends "${missing[@]}"; } >build/packages.log 2>&1 ||
    { tail -n 20 build/packages.log >&2; return 1; }
}

# Installs the exact packages of npm that the browser tests need, without a browser of their own.
install_browser_tests() {
  local folder=web/test/browser
  cmp -s "$folder/package-lock.json" "$folder/node_modules/.installed-lock" && return
  say "Installing the packages of $folder"
  mkdir -p build
  (cd "$folder" && PLAYWRIGHT_SKIP_BROWSER_DOWNLOAD=1 npm ci --no-audit --no-fund --ignore-scripts) \
    >build/npm.log 2>&1 || { tail -n 20 build/npm.log >&2; return 1; }
  cp "$folder/package-lock.json" "$folder/node_modules/.installed-lock"
}

# What is installed: the programs, and the extension for Ruby.
programs=(vistaro_command vistaro_auth vistaro_images vistaro_extractors qlmanage
  VistaroRuby)

# build PRESET [target…]: configures when packages may have come, and builds; output only when something
# fails.
build() {
  local preset=$1 log=build/$1.log
  shift
  mkdir -p build
  if [ ! "build/$preset/build.ninja" -nt /var/lib/dpkg/status ]; then
    cmake --preset "$preset" >"$log" 2>&1 || { cat "$log" >&2; return 1; }
  fi
  if [ -t 2 ]; then
    cmake --build --preset "$preset" "${@/#/--target=}" >&2
  else
    cmake --build --preset "$preset" "${@/#/--target=}" >"$log" 2>&1 || { cat "$log" >&2; return 1; }
  fi
}

# The private root that the programs use when started from a checkout, with the folders that the
# settings and caches need. Settings and accounts of the machine stay untouched.
use_checkout_root() {
  if [ -z "${VISTARO_ROOT+set}" ]; then
    export VISTARO_ROOT=$PWD/var/root
    mkdir -p -m 0755 "$VISTARO_ROOT/Library/Application Support" "$VISTARO_ROOT/Library/Caches" \
      "$VISTARO_ROOT/tmp"
  fi
  export VISTARO_RESOURCES=${VISTARO_RESOURCES:-$PWD/resources}
}
