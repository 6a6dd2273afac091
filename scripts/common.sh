# Shared settings of the build and test scripts (sourced, not run).
VN_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
VN_BUILD=${VN_BUILD_DIR:-$VN_ROOT/build}
VN_JOBS=${VN_JOBS:-$(nproc 2>/dev/null || echo 2)}
VN_WINE64=/usr/lib/wine/wine64
VN_WINE32=/usr/lib/wine/wine
# Wine's own server binary (the wineserver on PATH is only an alternatives
# link from the optional "wine" package).
VN_WINESERVER=/usr/lib/wine/wineserver64
[ -x "$VN_WINESERVER" ] || VN_WINESERVER=/usr/lib/wine/wineserver
[ -x "$VN_WINESERVER" ] || VN_WINESERVER=wineserver
export WINEDEBUG=-all
export WINEPREFIX=$VN_BUILD/wineprefix
# No display: a message box returns at once instead of waiting for a click.
unset DISPLAY

vn_log() { printf '\n==== %s\n' "$*"; }

vn_have_wine32() {
  [ -x "$VN_WINE32" ] && "$VN_WINE32" --version >/dev/null 2>&1
}

# The private prefix, booted once with the server kept alive. Wine's
# background processes inherit the pipes of whatever starts them, so they
# are started here with their output detached, never from a test.
vn_wine_up() {
  # A prefix first booted without 32-bit Wine has no 32-bit system files and
  # cannot run the x86 module: make it again once 32-bit Wine is there.
  if vn_have_wine32 && [ -d "$WINEPREFIX" ] && [ ! -f "$WINEPREFIX/.vn-wine32" ]; then
    echo "Making the Wine prefix again: it was made before 32-bit Wine was installed."
    "$VN_WINESERVER" -k </dev/null >/dev/null 2>&1 || true
    rm -rf "$WINEPREFIX"
  fi
  mkdir -p "$WINEPREFIX"
  "$VN_WINESERVER" -p 300 </dev/null >/dev/null 2>&1
  "$VN_WINE64" wineboot -i </dev/null >/dev/null 2>&1
  vn_have_wine32 && touch "$WINEPREFIX/.vn-wine32"
  return 0
}

vn_wine_down() {
  "$VN_WINESERVER" -k </dev/null >/dev/null 2>&1 || true
}

# A path as the Windows side sees it.
vn_winpath() { printf 'Z:%s' "$1" | tr '/' '\\'; }

vn_configure() {  # name, extra cmake arguments...
  local name=$1; shift
  cmake -S "$VN_ROOT" -B "$VN_BUILD/$name" -DCMAKE_BUILD_TYPE=Release "$@" >"$VN_BUILD/$name.configure.log" 2>&1 \
    || { cat "$VN_BUILD/$name.configure.log"; return 1; }
}

vn_build() {  # name, targets...
  local name=$1; shift
  local targets=()
  for t in "$@"; do targets+=(--target "$t"); done
  cmake --build "$VN_BUILD/$name" -j "$VN_JOBS" "${targets[@]}"
}
