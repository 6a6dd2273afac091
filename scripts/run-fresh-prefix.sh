#!/usr/bin/env bash
# Runs a Windows program in a Wine prefix of its own (created on first use):
#   run-fresh-prefix.sh <wine loader> <prefix dir> <program.exe>
#                       [--display <output dir>] [--register <dll>] [arguments]
# Nothing is registered in the prefix unless --register names a module for
# regsvr32. With --display the prefix's desktop and the program run on an
# Xvfb screen, and an argument "@shot" stands for <output dir>/about_box.bmp,
# which is also kept converted to PNG.
set -u
display=${DISPLAY:-}
. "$(dirname "$0")/common.sh"
loader=$1
export WINEPREFIX=$2
program=$3
shift 3
output= register= register_path=
while [ $# -gt 0 ]; do
  case $1 in
    --display) output=$2; shift 2; mkdir -p "$output" ;;
    --register) register_path=$2; register=$(vn_winpath "$2"); shift 2 ;;
    *) break ;;
  esac
done
args=()
for a in "$@"; do
  [ "$a" = @shot ] && a=$(vn_winpath "$output/about_box.bmp")
  args+=("$a")
done

if [ -n "$output" ] && [ -z "${VN_ON_XVFB:-}" ]; then
  # Again, on a fresh Xvfb screen; everything Wine starts sees it.
  rm -f "$output/about_box.bmp"
  VN_ON_XVFB=1 xvfb-run -a -s "-screen 0 1024x768x24" bash "$0" "$loader" "$WINEPREFIX" "$program" \
    --display "$output" ${register_path:+--register "$register_path"} "$@" 2>&1
  rc=$?
  if [ -f "$output/about_box.bmp" ]; then
    convert "$output/about_box.bmp" "$output/about_box.png" && echo "screenshot: $output/about_box.png"
  fi
  exit $rc
fi
[ -n "${VN_ON_XVFB:-}" ] && export DISPLAY=$display

mkdir -p "$WINEPREFIX"
"$loader" wineboot -i </dev/null >/dev/null 2>&1
if [ -n "$register" ]; then
  "$loader" regsvr32 /s "$register" </dev/null >/dev/null 2>&1 || { echo "FAILED: regsvr32 $register"; exit 1; }
fi
"$loader" "$(vn_winpath "$program")" "${args[@]}" </dev/null 2>&1
rc=$?
"$VN_WINESERVER" -k </dev/null >/dev/null 2>&1
exit $rc
