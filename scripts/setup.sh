#!/usr/bin/env bash
# Installs what the build and the tests need (Debian packages). Safe to run
# again: when everything is present it only checks, quietly.
#
# 32-bit Wine runs the x86 module. Debian's multi-arch rule says a library
# installed for both amd64 and i386 must have the same version on both. On
# days when the security suite's i386 index fails to load, amd64 libraries
# come from the security suite and i386 ones from the main suite, and
# wine32:i386 does not install. The fix: install wine32:i386 together with
# wine64, libwine and libwine-dev in one apt-get call, with every skewed
# multi-arch library of its dependency closure pinned, for both
# architectures, to the newest version that both have. The pins are worked
# out from what apt reports each time, never hard-coded.
set -u
. "$(dirname "$0")/common.sh"

packages=(cmake make g++ googletest libgtest-dev libeigen3-dev libbenchmark-dev
          g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix mingw-w64-tools
          wine wine64 libwine-dev xvfb xauth imagemagick python3 clang libclang-rt-14-dev)
SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO=sudo
APT_LOG=$VN_BUILD/apt.log
mkdir -p "$VN_BUILD"
apt_install() {  # packages... (quiet; the log keeps apt's words)
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -q --no-install-recommends "$@" >>"$APT_LOG" 2>&1
}
# An index that fails to update (an i386 one on some days) must not stop us.
apt_update() { $SUDO apt-get update -q >>"$APT_LOG" 2>&1 || true; }

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  vn_log "Installing: ${missing[*]}"
  apt_update
  apt_install "${missing[@]}" || { echo "apt-get install failed for: ${missing[*]}"; tail -n 20 "$APT_LOG"; exit 1; }
fi

# The newest of the given Debian versions.
newest() {
  local best="" v
  for v in "$@"; do
    if [ -z "$best" ] || dpkg --compare-versions "$v" gt "$best"; then best=$v; fi
  done
  printf '%s' "$best"
}

# "name:amd64=V name:i386=V" for every multi-arch "same" library in the
# dependency closure of wine32:i386 that is installed for amd64 and whose
# newest amd64 and i386 versions differ; V is the newest version both have.
wine32_pins() {
  local names same
  names=$(apt-cache depends --recurse --no-recommends --no-suggests --no-conflicts --no-breaks \
            --no-replaces --no-enhances wine32:i386 2>/dev/null \
          | sed -n 's/^\([a-z0-9][a-z0-9.+-]*\):i386$/\1/p' | sort -u)
  [ -n "$names" ] || return 0
  same=$(dpkg-query -W -f='${Package} ${Multi-Arch}\n' $(printf '%s:amd64 ' $names) 2>/dev/null \
         | awk '$2 == "same" {print $1}')
  [ -n "$same" ] || return 0
  # One look-up for all: "name arch version" lines.
  local table n args=()
  for n in $same; do args+=("$n:amd64" "$n:i386"); done
  # One look-up for all of them, as "name arch version" lines.
  table=$(apt-cache madison "${args[@]}" 2>/dev/null \
          | awk -F'|' '{n=$1; gsub(/ /,"",n); sub(/:.*/,"",n); v=$2; gsub(/ /,"",v);
                        a=($3 ~ / i386 Packages/) ? "i386" : "amd64"; print n, a, v}')
  local a_list i_list a_top i_top common
  for n in $same; do
    a_list=$(awk -v n="$n" '$1 == n && $2 == "amd64" {print $3}' <<<"$table")
    i_list=$(awk -v n="$n" '$1 == n && $2 == "i386" {print $3}' <<<"$table")
    a_top=$(newest $a_list); i_top=$(newest $i_list)
    [ -n "$i_top" ] && [ "$a_top" != "$i_top" ] || continue
    common=$(newest $(grep -Fx -f <(printf '%s\n' $i_list) <(printf '%s\n' $a_list)))
    [ -n "$common" ] && printf '%s:amd64=%s %s:i386=%s\n' "$n" "$common" "$n" "$common"
  done
}

# The installed packages built from the same source as a pinned library (its
# -dev package, say) depend on its exact version: they move to the pinned
# version with it instead of being removed. Reads pins, prints more pins.
companion_pins() {
  local pins pin name version src installed pairs table
  pins=$(cat)
  installed=$(dpkg-query -W -f='${db:Status-Abbrev} ${Package} ${Architecture} ${source:Package}\n' 2>/dev/null \
              | awk '$1 == "ii" && ($3 == "amd64" || $3 == "all") {print $2, $4}')
  pairs=$(for pin in $pins; do
            case $pin in *:amd64=*) ;; *) continue ;; esac
            name=${pin%%:*}; version=${pin#*=}
            src=$(awk -v n="$name" '$1 == n {print $2; exit}' <<<"$installed")
            awk -v s="$src" -v n="$name" -v v="$version" '$2 == s && $1 != n {print $1, v}' <<<"$installed"
          done | sort -u | grep -v -F -f <(printf '%s\n' $pins | sed 's/[:=].*/ /'))
  [ -n "$pairs" ] || return 0
  # Only where the pinned version exists for that package too.
  table=$(apt-cache madison $(awk '{print $1}' <<<"$pairs") 2>/dev/null \
          | awk -F'|' '{n=$1; gsub(/ /,"",n); v=$2; gsub(/ /,"",v); print n, v}')
  awk 'NR == FNR {have[$0] = 1; next} ($0 in have) {print $1 "=" $2}' <(printf '%s\n' "$table") <(printf '%s\n' "$pairs")
}

if [ "${VN_WITH_WINE32:-1}" = 1 ] && ! vn_have_wine32; then
  vn_log "Installing 32-bit Wine"
  rm -f "$VN_BUILD/wine32-unavailable"
  dpkg --print-foreign-architectures | grep -qx i386 || $SUDO dpkg --add-architecture i386
  apt_update
  wine32_set=(wine32:i386 wine64 libwine libwine-dev)
  pins=$(wine32_pins)
  pins="$pins $(companion_pins <<<"$pins")"
  if [ -n "${pins// /}" ]; then
    echo "Pinned to the version both architectures have (multi-arch libraries must match):"
    for pin in $pins; do
      name=${pin%%=*}; version=${pin#*=}
      case $name in *:i386) ;; *)
        installed=$(dpkg-query -W -f='${Version}' "$name" 2>/dev/null)
        if [ -n "$installed" ] && dpkg --compare-versions "$version" lt "$installed"; then
          echo "  $name $version (DOWNGRADES the installed $installed)"
        else
          echo "  $name $version"
        fi ;;
      esac
    done
  fi
  # shellcheck disable=SC2086
  if apt_install --allow-downgrades "${wine32_set[@]}" $pins && vn_have_wine32; then
    echo "32-bit Wine installed."
  else
    # Only a broken mirror gets here; the tests say so beside their summary.
    grep -E '^(E:|W:|Err:)| : Depends: ' "$APT_LOG" | tail -n 6 >"$VN_BUILD/wine32-unavailable"
    echo "32-bit Wine could not be installed; apt said:"
    sed 's/^/  /' "$VN_BUILD/wine32-unavailable"
  fi
fi
exit 0
