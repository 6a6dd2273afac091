#!/usr/bin/env bash
# Installs what the build and the tests need (Debian packages). Safe to run
# again: packages already present are not installed twice.
set -u
. "$(dirname "$0")/common.sh"

packages=(cmake make g++ googletest libgtest-dev libeigen3-dev libbenchmark-dev
          g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix mingw-w64-tools
          wine wine64 libwine-dev xvfb xauth imagemagick)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO=sudo
if [ ${#missing[@]} -gt 0 ]; then
  vn_log "Installing: ${missing[*]}"
  # An index that fails to update (the i386 one on some days) must not stop us.
  $SUDO apt-get update -q >/dev/null 2>&1 || true
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -q --no-install-recommends "${missing[@]}" >/dev/null \
    || { echo "apt-get install failed for: ${missing[*]}"; exit 1; }
fi

# 32-bit Wine, to run the x86 module: optional, since it installs only on days
# when the mirror's i386 indexes match the amd64 ones.
if [ "${VN_WITH_WINE32:-1}" = 1 ] && ! vn_have_wine32; then
  vn_log "Trying to install 32-bit Wine (optional)"
  $SUDO dpkg --add-architecture i386 2>/dev/null || true
  $SUDO apt-get update -q >/dev/null 2>&1 || true
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -q --no-install-recommends wine32:i386 >/dev/null 2>&1 \
    || echo "32-bit Wine could not be installed on this machine today (i386 packages do not resolve)."
fi
exit 0
