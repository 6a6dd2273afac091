#!/usr/bin/env bash
# Runs the Windows-side tests of one built configuration under Wine:
#   scripts/wine-ctest.sh x64 [ctest arguments, e.g. -R VNDSP]
set -u
. "$(dirname "$0")/common.sh"
config=${1:-x64}
shift || true
[ -d "$VN_BUILD/$config" ] || { echo "build $config first (scripts/build.sh $config)"; exit 1; }
vn_wine_up
(cd "$VN_BUILD/$config" && ctest --output-on-failure --timeout 300 "$@")
rc=$?
vn_wine_down
exit $rc
