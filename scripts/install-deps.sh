#!/usr/bin/env bash
# Installs the Debian packages that building, testing, benchmarking and fuzzing need, then
# fetches the source packages the build compiles in (scripts/fetch-sources.sh: pugixml).
# Idempotent: does nothing when every package is installed and every source fetched. Works
# as root or through sudo (only the installation needs either).
set -euo pipefail

packages=(
  cmake ninja-build make g++ pkg-config
  libpugixml-dev libjsoncpp-dev libsodium-dev
  googletest libgtest-dev libgmock-dev libbenchmark-dev libcli11-dev
  clang libclang-rt-14-dev valgrind gcovr libxml2-dev
  gpgv debian-archive-keyring dpkg-dev
)

fetch_sources() {
  bash "$(dirname "$0")/fetch-sources.sh" pugixml:libpugixml-dev
}

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$package")
  fi
done
if [ ${#missing[@]} -eq 0 ]; then
  fetch_sources
  exit 0
fi

if [ "$(id -u)" -eq 0 ]; then
  as_root=()
elif command -v sudo >/dev/null 2>&1; then
  as_root=(sudo)
else
  echo "install-deps: need root or sudo to install: ${missing[*]}" >&2
  exit 1
fi

echo "install-deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fetch_sources
