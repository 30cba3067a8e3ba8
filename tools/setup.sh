#!/usr/bin/env bash
# Installs what is missing to build, run and test: nothing, without the network, when all is there.
#   tools/setup.sh          what `make run`, `make test` and `make bench` need
#   tools/setup.sh checks   besides that, what the slower checks need (Clang, sanitizers, coverage)
set -u

build_packages=(
  cmake ninja-build g++ g++-multilib binutils
  libpugixml-dev:i386 libspdlog-dev:i386 libgtest-dev:i386 libgmock-dev:i386 libbenchmark-dev:i386
  libpugixml-dev libspdlog-dev libgtest-dev libgmock-dev libbenchmark-dev
  libboost-dev nlohmann-json3-dev libcli11-dev
  libxml2-utils tzdata procps zsh fish
)
check_packages=(clang clang-format clang-tidy libclang-rt-dev gcovr)

wanted=("${build_packages[@]}")
case "${1:-}" in
  "") ;;
  checks) wanted+=("${check_packages[@]}") ;;
  *) echo "setup: unknown word '$1' (only 'checks' is known)" >&2; exit 2 ;;
esac

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
  echo "setup: this is not a Debian machine; install the equivalents of: ${wanted[*]}" >&2
  exit 1
fi

is_installed() {
  [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null | head -c 9)" = installed ]
}

find_missing() {
  missing=()
  local package
  for package in "${wanted[@]}"; do
    is_installed "$package" || missing+=("$package")
  done
}

find_missing
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "setup: run this once as root, or install sudo; missing: ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi

apt() {
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get -q -y -o DPkg::Lock::Timeout=300 --no-install-recommends "$@"
}

echo "setup: installing ${missing[*]}"
dpkg --print-foreign-architectures | grep -qx i386 || "${as_root[@]}" dpkg --add-architecture i386
# One unreachable index must not stop what the others can supply; a missing package is told below.
apt update || echo "setup: some package lists could not be refreshed; going on with those at hand"
if ! apt install "${missing[@]}"; then
  # Together they failed: one by one, so that a single bad package does not hide the rest.
  for package in "${missing[@]}"; do
    apt install "$package" || true
  done
fi

find_missing
if [ ${#missing[@]} -ne 0 ]; then
  echo "setup: could not be installed: ${missing[*]}" >&2
  exit 1
fi
