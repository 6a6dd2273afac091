#!/usr/bin/env bash
# The main job: install what is needed, build VNMATH.dll (x64 and x86),
# register it in a private Wine prefix and run the demo host script.
set -eu
. "$(dirname "$0")/common.sh"
bash "$VN_ROOT/scripts/setup.sh"
bash "$VN_ROOT/scripts/build.sh" x64 x86
vn_log "Registering VNMATH.dll (x64) in $WINEPREFIX"
vn_wine_up
"$VN_WINE64" regsvr32 /s "$(vn_winpath "$VN_BUILD/x64/VNMATH.dll")"
vn_log "Demo: examples/demo.vbs"
out=$("$VN_WINE64" cscript //nologo "$(vn_winpath "$VN_ROOT/examples/demo.vbs")" </dev/null 2>&1) || true
printf '%s\n' "$out"
vn_wine_down
printf '%s\n' "$out" | grep -q '^Demo finished' || { echo "the demo did not finish"; exit 1; }
echo "Built: $VN_BUILD/x64/VNMATH.dll and $VN_BUILD/x86/VNMATH.dll"
