#!/bin/sh
# Fails when libquorvel.so exports a name outside IP_NET_DVR_, or when the
# public headers and the export list disagree, or when a name of the given
# lists (one name a line, # starts a comment) is not exported.
# Usage: check_exports.sh <libquorvel.so> <include dir> [name list ...]
set -eu
lib=$1
include=$2
shift 2

exported=$(nm -D --defined-only "$lib" | awk 'NF == 3 { print $3 }' | sort -u)
if [ -z "$exported" ]; then
  echo "no exported names in $lib"
  exit 1
fi
stray=$(printf '%s\n' "$exported" | grep -v '^IP_NET_DVR_' || true)
if [ -n "$stray" ]; then
  echo "exported names outside IP_NET_DVR_:"
  printf '%s\n' "$stray"
  exit 1
fi

# Every QV_API declaration names its function on the QV_API line.
declared=$(grep -h 'QV_API' "$include"/quorvel/*.h | grep -o 'IP_NET_DVR_[A-Za-z0-9_]*' | sort -u)
missing=$(printf '%s\n' "$declared" | grep -vxF "$exported" || true)
undeclared=$(printf '%s\n' "$exported" | grep -vxF "$declared" || true)
status=0
for list in "$@"; do
  required=$(sed 's/#.*//' "$list" | tr -d ' \t' | grep -v '^$' | sort -u)
  absent=$(printf '%s\n' "$required" | grep -vxF "$exported" || true)
  if [ -n "$absent" ]; then
    echo "required by $(basename "$list") but not exported:"
    printf '%s\n' "$absent"
    status=1
  fi
done
if [ -n "$missing" ]; then
  echo "declared in the public headers but not exported:"
  printf '%s\n' "$missing"
  status=1
fi
if [ -n "$undeclared" ]; then
  echo "exported but declared in no public header:"
  printf '%s\n' "$undeclared"
  status=1
fi
[ $status -eq 0 ] && echo "$(printf '%s\n' "$exported" | wc -l) exported names, all IP_NET_DVR_ and all declared"
exit $status
