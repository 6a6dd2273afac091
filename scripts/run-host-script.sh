#!/usr/bin/env bash
# Runs a VBScript or JScript test under the Wine script host and checks both
# its exit code and its closing summary: the Wine host prints nothing and
# exits 0 when a script fails to parse or stops on an unhandled error.
set -u
loader=$1
script=$2
winpath="Z:$(printf '%s' "$script" | tr '/' '\\')"
out=$("$loader" cscript //nologo "$winpath" 2>&1 </dev/null)
rc=$?
printf '%s\n' "$out"
if [ $rc -ne 0 ]; then
  echo "script host exited with $rc"
  exit 1
fi
if ! printf '%s\n' "$out" | grep -Eq '^[0-9]+ passed, 0 failed'; then
  echo "no passing summary line from $script"
  exit 1
fi
