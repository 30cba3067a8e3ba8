#!/usr/bin/env bash
# tools/fuzz.sh [SECONDS] [TARGET...]: runs fuzz targets side by side for SECONDS (60 unless given;
# all targets unless named). What they find worth keeping stays in build/fuzz/corpus/TARGET from run
# to run; an input that fails lands in build/fuzz/findings/TARGET.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=60
if [[ ${1:-} =~ ^[0-9]+$ ]]; then
  seconds=$1
  shift
fi
targets=("$@")
[[ $# -gt 0 ]] || targets=(task-document trigger batch ini crontab request)

cmake --preset fuzz
cmake --build --preset fuzz --target "${targets[@]/#/fuzz-}"

# The folders of the repository that a target starts from.
seeds_of() {
  case $1 in
    task-document) echo "tests/fuzz/$1 examples/tasks tests/agent/document/samples" ;;
    ini) echo "tests/fuzz/$1 examples/jobs" ;;
    *) echo "tests/fuzz/$1" ;;
  esac
}

run() {
  local target=$1
  mkdir -p "build/fuzz/corpus/$target" "build/fuzz/findings/$target"
  # shellcheck disable=SC2046  # several folders
  nice "build/fuzz/bin/fuzz-$target" "build/fuzz/corpus/$target" $(seeds_of "$target") \
    -dict="tests/fuzz/$target.dict" -artifact_prefix="build/fuzz/findings/$target/" \
    -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
    > "build/fuzz/$target.log" 2>&1
}

pids=()
trap 'kill "${pids[@]}" 2>/dev/null || true' EXIT
for target in "${targets[@]}"; do
  run "$target" &
  pids+=($!)
done

status=0
for i in "${!targets[@]}"; do
  result=passed
  wait "${pids[i]}" || { result="FAILED, see build/fuzz/${targets[i]}.log"; status=1; }
  summary=$(grep -oE '(cov: [0-9]+|number_of_executed_units: +[0-9]+)' \
    "build/fuzz/${targets[i]}.log" | tail -n 2 | tr -s ' \n' ' ' || true)
  echo "${targets[i]}: $result; $summary"
done
exit "$status"
