#!/usr/bin/env bash
# Both modules registered in one prefix; removing the x86 one must leave the
# x64 one fully working (ProgID and TypeLib keys are shared by both views).
set -u
. "$(dirname "$0")/common.sh"
x64=$(vn_winpath "$VN_BUILD/x64/VNMATH.dll")
x86=$(vn_winpath "$VN_BUILD/x86/VNMATH.dll")
"$VN_WINE64" regsvr32 /s "$x64" && "$VN_WINE32" regsvr32 /s "$x86" || { echo "registration failed"; exit 1; }
script=$(vn_winpath "$VN_ROOT/tests/scripts/array_methods.vbs")
for step in "both registered" "x86 unregistered"; do
  [ "$step" = "x86 unregistered" ] && "$VN_WINE32" regsvr32 /s /u "$x86"
  out=$("$VN_WINE64" cscript //nologo "$script" </dev/null 2>&1)
  echo "$step: $(printf '%s\n' "$out" | tail -n 1)"
  printf '%s\n' "$out" | grep -Eq '^[0-9]+ passed, 0 failed' || { echo "x64 module broken ($step)"; exit 1; }
done
"$VN_WINE32" regsvr32 /s "$x86"
"$VN_WINE64" regsvr32 /s /u "$x64"
out=$("$VN_WINE32" cscript //nologo "$script" </dev/null 2>&1)
echo "x64 unregistered: $(printf '%s\n' "$out" | tail -n 1)"
printf '%s\n' "$out" | grep -Eq '^[0-9]+ passed, 0 failed' || { echo "x86 module broken after x64 removal"; exit 1; }
"$VN_WINE64" regsvr32 /s "$x64"
