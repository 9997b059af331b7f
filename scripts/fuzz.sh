#!/usr/bin/env bash
# Runs every fuzzer of a build folder; fails when one finds something.
#   scripts/fuzz.sh BUILD_FOLDER SECONDS [TARGET...]
# What is found is saved in tests/fuzz/findings/TARGET, where every test run from then on tries it. Inputs that reached
# new code stay in BUILD_FOLDER/fuzz-corpus/TARGET and are where the next run goes on.
set -euo pipefail
build=$(realpath "$1")
seconds=$2
shift 2
cd "$(dirname "$0")/.."

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=(lines modulebodyfile backendbodyfile interpreter)
fi
failed=()
for target in "${targets[@]}"; do
  gathered=$build/fuzz-corpus/$target
  findings=tests/fuzz/findings/$target
  log=$build/fuzz-$target.log
  longest=5000
  [ "$target" = lines ] && longest=12000 # a line of 9,999 characters is still read
  mkdir -p "$gathered" "$findings"
  echo "Fuzzing $target for $seconds s"
  if "$build/tests/fuzz/fuzz_$target" -max_total_time="$seconds" -max_len="$longest" -timeout=30 -report_slow_units=30 \
    -dict="tests/fuzz/dictionaries/$target.dict" -artifact_prefix="$findings/" -print_final_stats=1 \
    "$gathered" "tests/fuzz/corpus/$target" "$findings" >"$log" 2>&1; then
    grep -E "number_of_executed_units|Done" "$log" || true
  else
    failed+=("$target")
    tail -n 60 "$log"
  fi
done
if [ ${#failed[@]} -gt 0 ]; then
  echo "Something was found by: ${failed[*]} (saved in tests/fuzz/findings)" >&2
  exit 1
fi
