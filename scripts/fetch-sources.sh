#!/usr/bin/env bash
# Fetches the Debian source packages of dependencies the build compiles in, into a cache
# outside the repository, and leaves a stable link to each: <cache>/<package> ->
# <cache>/<package>-<version>. The version fetched is the one of the system's -dev package,
# so the compiled-in library is the one Debian ships, with Debian's patches applied.
#
# apt is run with a private configuration of its own (a deb-src entry for the system's
# Debian release, its own lists and cache directories): the machine's apt sources are not
# touched, and apt still verifies the archive's signatures with Debian's keyring.
#
# Usage: scripts/fetch-sources.sh SOURCE-PACKAGE:DEV-PACKAGE...   (e.g. pugixml:libpugixml-dev)
# Cache: $ATRIUM_XML_SOURCES, else ${XDG_CACHE_HOME:-$HOME/.cache}/atrium-xml/sources.
# Idempotent: a package already unpacked at the wanted version is not fetched again.
set -euo pipefail

cache=${ATRIUM_XML_SOURCES:-${XDG_CACHE_HOME:-$HOME/.cache}/atrium-xml/sources}
apt_dir="$cache/.apt"
codename=$(. /etc/os-release && echo "${VERSION_CODENAME:?no release codename in /etc/os-release}")
keyring=/usr/share/keyrings/debian-archive-keyring.gpg

apt_private() {
  # The private lists and cache belong to root; apt's download sandbox user could not
  # write there, so the downloads run as the caller.
  apt-get -q -o Dir::Etc::SourceList="$apt_dir/sources.list" -o Dir::Etc::SourceParts=- \
    -o Dir::State::Lists="$apt_dir/lists" -o Dir::Cache="$apt_dir/cache" \
    -o APT::Sandbox::User="$(id -un)" "$@"
}

updated=
for spec in "$@"; do
  source_pkg=${spec%%:*}
  dev_pkg=${spec#*:}
  version=$(dpkg-query -W -f='${Version}' "$dev_pkg")
  upstream=${version%-*}
  upstream=${upstream#*:}
  target="$cache/$source_pkg-$upstream"
  if [ -f "$target/.fetched-$version" ]; then
    ln -sfn "$target" "$cache/$source_pkg"
    continue
  fi
  mkdir -p "$apt_dir/lists/partial" "$apt_dir/cache/archives/partial" "$cache/.download"
  if [ -z "$updated" ]; then
    echo "deb-src [signed-by=$keyring] http://deb.debian.org/debian $codename main" > "$apt_dir/sources.list"
    apt_private update >/dev/null
    updated=1
  fi
  rm -rf "$cache/.download" "$target" && mkdir -p "$cache/.download"
  (cd "$cache/.download" && apt_private source "$source_pkg=$version" >/dev/null)
  mv "$cache/.download/$source_pkg-$upstream" "$target"
  rm -rf "$cache/.download"
  touch "$target/.fetched-$version"
  ln -sfn "$target" "$cache/$source_pkg"
  echo "fetch-sources: $source_pkg $version in $target"
done
