#!/usr/bin/env bash
# Runs every benchmark and prints one table of the ratios to the reference
# libraries (ours / theirs, fastest of several interleaved rounds, with the
# spread of the rounds; see bench/ratio_line.h).
#
#   bash scripts/bench.sh                 all build/bench/bench_* programs, and
#                                         bench_com_x64 / bench_com_x86 (the
#                                         automation frame under Wine) for each
#                                         Windows build that exists
#   bash scripts/bench.sh bench_array ... only the programs named
#
# First installs the references the benchmarks compare with (FFTW, LAPACKE
# with OpenBLAS, numpy and scipy from Debian) when they are missing; safe to
# run again. Each program's full output is kept in build/bench-results/.
set -u
. "$(dirname "$0")/common.sh"

packages=(libfftw3-dev liblapacke-dev libopenblas-dev python3-numpy python3-scipy)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO=sudo
if [ ${#missing[@]} -gt 0 ]; then
  vn_log "Installing: ${missing[*]}"
  $SUDO apt-get update -q >/dev/null 2>&1 || true
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -q --no-install-recommends "${missing[@]}" >/dev/null \
    || { echo "apt-get install failed for: ${missing[*]}"; exit 1; }
fi

vn_log "Building the benchmarks"
mkdir -p "$VN_BUILD"
bash "$VN_ROOT/scripts/build.sh" bench >"$VN_BUILD/bench.build.log" 2>&1 \
  || { tail -n 40 "$VN_BUILD/bench.build.log"; echo "benchmark build failed"; exit 1; }

# The ratio lines of a program's output; a console reporter may leave a
# colour escape in front of one, so the line is cut from "ratio " on.
ratio_lines() {
  grep -ao 'ratio [^ ]* [^ ]* ours_us=.*$' "$@" | tr -d '\r'
}

wanted() {  # name, requested names (none: all)
  local name=$1; shift
  [ $# -eq 0 ] && return 0
  for w in "$@"; do [ "$w" = "$name" ] && return 0; done
  return 1
}

results=$VN_BUILD/bench-results
mkdir -p "$results"
rm -f "$results"/*.log
status=0
# The programs are built in the bench/ folder of the bench build.
found=0
for program in "$VN_BUILD"/bench/bench/bench_* "$VN_BUILD"/bench/bench_*; do
  [ -f "$program" ] && [ -x "$program" ] || continue
  name=$(basename "$program")
  wanted "$name" "$@" || continue
  found=1
  vn_log "Running $name"
  # One thread for the references: the kernels are single-threaded too.
  if ! OPENBLAS_NUM_THREADS=1 OMP_NUM_THREADS=1 "$program" >"$results/$name.log" 2>&1; then
    echo "$name failed; see $results/$name.log"
    status=1
  fi
  ratio_lines "$results/$name.log" | wc -l | xargs printf '%s comparison lines\n'
done

[ $found = 1 ] || echo "no benchmark program found under $VN_BUILD/bench"

# The automation frame as a late-bound host sees it, under Wine, for each
# Windows module built in this tree (scripts/build.sh x64 / x86).
for config in x64 x86; do
  name=bench_com_$config
  [ -d "$VN_BUILD/$config" ] || continue
  wanted "$name" "$@" || continue
  wine=$VN_WINE64
  if [ $config = x86 ]; then
    vn_have_wine32 || { echo "$name skipped: no 32-bit Wine"; continue; }
    wine=$VN_WINE32
  fi
  vn_log "Running $name"
  vn_build "$config" VNMATH bench_com >"$VN_BUILD/$name.build.log" 2>&1 \
    || { tail -n 20 "$VN_BUILD/$name.build.log"; status=1; continue; }
  vn_wine_up
  "$wine" regsvr32 /s "$(vn_winpath "$VN_BUILD/$config/VNMATH.dll")" </dev/null >/dev/null 2>&1
  if ! "$wine" "$VN_BUILD/$config/bench_com.exe" </dev/null >"$results/$name.log" 2>&1; then
    echo "$name failed; see $results/$name.log"
    status=1
  fi
  vn_wine_down
  ratio_lines "$results/$name.log" | wc -l | xargs printf '%s comparison lines\n'
done

vn_log "Ratios to the references (ours / reference; below 1 means faster)"
cat "$results"/*.log 2>/dev/null | ratio_lines | awk '
  BEGIN { printf "| %-12s | %-26s | %10s | %-20s | %10s | %6s | %7s |\n", "program", "case", "ours [us]", "reference", "ref [us]", "ratio", "spread";
          printf "|%s|%s|%s|%s|%s|%s|%s|\n", "--------------", "----------------------------", "-----------:", "----------------------", "-----------:", "-------:", "--------:" }
  {
    delete f
    for (i = 4; i <= NF; i++) { split($i, kv, "="); f[kv[1]] = kv[2] }
    printf "| %-12s | %-26s | %10s | %-20s | %10s | %6s | %6s%% |\n", $2, $3, f["ours_us"], f["ref"], f["ref_us"], f["ratio"], f["spread"]
  }'
exit $status
