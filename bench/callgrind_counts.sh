#!/usr/bin/env bash
# Instructions per call of every benchmark case, counted by callgrind: repeatable to the
# instruction on any machine, so before/after comparisons do not depend on the load of a
# shared host. Usage:
#   bench/callgrind_counts.sh <build dir> [case pattern] [calls]
# Columns: the module call (without the caller's clear of the record), the raw parse of the
# same bytes, the floor's writes (memset/memcpy replay), and module / (raw + writes).
# The random source is a fixed sequence in probe mode (see bench_main.cpp); only the three
# probe functions are collected, not the generation of the answers. memset and memcpy run
# as "rep stos/movs" here, which callgrind counts per iteration: their instruction counts
# overstate their time, so the ratio of this table is not the ratio of the timings.
set -euo pipefail

build=${1:?usage: callgrind_counts.sh <build dir> [case pattern] [calls]}
pattern=${2:-/}
calls=${3:-20}
bench="$build/bench/atrium_xml_bench"
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

# The case names, in table order, from the listing of the registered benchmarks.
mapfile -t cases < <("$bench" --benchmark_list_tests=true 2>/dev/null |
  sed -n 's#/module$##p' | grep -e "$pattern" | awk '!seen[$0]++')

# Inclusive cost of one function in a callgrind output file (0 when it cost nothing).
inclusive() {
  callgrind_annotate --inclusive=yes "$1" 2>/dev/null |
    awk -v fn="$2" '!found && $0 ~ fn { gsub(",", "", $1); cost = $1; found = 1 } END { print cost + 0 }'
}

printf '%-40s %12s %12s %12s %8s\n' "case" "module_Ir" "raw_Ir" "writes_Ir" "x_floor"
for name in "${cases[@]}"; do
  case "$name" in site_machinery/*) continue ;; esac  # not a probe case
  valgrind --tool=callgrind --callgrind-out-file="$out/cg" --toggle-collect='*ProbeModuleCall*' \
    --toggle-collect='*ProbeRawParse*' --toggle-collect='*ProbeFloorWrites*' \
    "$bench" --probe="$name" --calls="$calls" >/dev/null 2>"$out/log"
  module=$(( $(inclusive "$out/cg" 'ProbeModuleCall') / calls ))
  raw=$(( $(inclusive "$out/cg" 'ProbeRawParse') / calls ))
  writes=$(( $(inclusive "$out/cg" 'ProbeFloorWrites') / calls ))
  printf '%-40s %12d %12d %12d %8.2f\n' "$name" "$module" "$raw" "$writes" \
    "$(echo "$module / ($raw + $writes)" | bc -l)"
done
