#!/usr/bin/env bash
# Builds the seed corpora of the fuzz targets from the answers kept in the repository
# (tests/data, tests/hardening/data, examples/answers) into OUT_DIR/<target>/, one file per
# (function, answer): the selector byte(s) each target reads first, then the answer.
# Generated corpora are build output: keep OUT_DIR inside a build directory.
#   usage: fuzz/make_corpus.sh OUT_DIR
set -euo pipefail

out_dir=${1:?usage: make_corpus.sh OUT_DIR}
root=$(cd "$(dirname "$0")/.." && pwd)

mapfile -t xml_answers < <(find "$root/tests/data" "$root/tests/hardening/data" "$root/examples/answers" \
                                -type f -name '*.xml' 2>/dev/null | sort)
mapfile -t json_answers < <(find "$root/tests/data" "$root/tests/hardening/data" \
                                 -type f -name '*.json' 2>/dev/null | sort)

# byte N: writes the byte of value N (0..255).
byte() { printf "\\$(printf '%03o' "$1")"; }

# seed TARGET NAME PREFIX_BYTES... -- FILE: prefix bytes, then the file.
seed() {
  local target=$1 name=$2
  shift 2
  local prefix=()
  while [ "$1" != "--" ]; do prefix+=("$1"); shift; done
  local file=$2
  mkdir -p "$out_dir/$target"
  { for b in "${prefix[@]}"; do byte "$b"; done; cat "$file"; } > "$out_dir/$target/$name-$(basename "$file")"
}

# The families whose first byte picks the function: every answer for every function.
for file in "${xml_answers[@]}"; do
  for sel in 0 1 2 3 4 5 6; do seed fuzz_portal "s$sel" "$sel" -- "$file"; done
  for sel in 0 1 2 4 5 6 7 8 9 10; do seed fuzz_conference "s$sel" "$sel" -- "$file"; done
  for sel in 0 2; do seed fuzz_soap "s$sel" "$sel" -- "$file"; done
  for sel in 1 2; do
    for param in 0 7 200; do seed fuzz_sites "s$sel-p$param" "$sel" "$param" -- "$file"; done
  done
  seed fuzz_ktl_xml "nopath" 0 -- "$file"
done
for file in "${json_answers[@]}"; do
  for sel in 0 1 2 3 4 5; do seed fuzz_json "s$sel" "$sel" -- "$file"; done
done

# The JSON scanner reads a key (ended by a backslash and one more byte), the JSON text and,
# from the end, the destination size.
scanner_json=$(mktemp)
trap 'rm -f "$scanner_json"' EXIT
for key in Uri RegPassword RegIpAddress; do
  printf '%s\\Z{"Uri":"sip:1@uc.example","RegPassword":"a,b","RegIpAddress":"10.0.0.1"}\001\000' "$key" > "$scanner_json"
  seed fuzz_soap "scanner-$key" 1 -- "$scanner_json"
done

# Address resolution: host:port texts; the parameter byte is the output capacity minus one.
for uri in "host.example:5060" "unresolvable.example:80" "10.0.0.1:5061" "host.example:0" "host.example" \
           "[::1]:5060" "a.b.c.d.e.f.example:65535"; do
  printf '%s' "$uri" > "$scanner_json"
  for param in 255 31 15; do seed fuzz_sites "resolve-$param-${uri//[^a-z0-9]/_}" 0 "$param" -- "$scanner_json"; done
done

# The XML library with a dotted path: the first byte is the path's length.
portal_path="UserInfo.LoginToken.AccessToken"
for file in "${xml_answers[@]}"; do
  case $(basename "$file") in
    portal-*|login-*)
      printf '%s' "$portal_path" > "$scanner_json"
      cat "$file" >> "$scanner_json"
      seed fuzz_ktl_xml "path" "${#portal_path}" -- "$scanner_json"
      ;;
  esac
done

for dir in "$out_dir"/*/; do
  echo "$(basename "$dir"): $(find "$dir" -type f | wc -l) seeds"
done
