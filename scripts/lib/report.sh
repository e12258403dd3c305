# shellcheck shell=bash
# What scripts/test keeps of its runs, and the table at its end.

declare -a rows=() retried=()
total_passed=0 total_failed=0 total_skipped=0

begin() {
  began=$SECONDS
  printf '\n==> %s\n' "$1"
}

# done_with CONFIGURATION KIND PASSED FAILED SKIPPED
done_with() {
  local seconds=$((SECONDS - began))
  rows+=("$(printf '%-10s %-12s %7d %7d %8d %5d s' "$@" "$seconds")")
  [[ $2 == build && $4 -eq 0 ]] || total_passed=$((total_passed + $3))
  total_failed=$((total_failed + $4))
  total_skipped=$((total_skipped + $5))
  if [[ $4 -eq 0 ]]; then
    printf '%s %s: %d passed (%d s)\n' "$1" "$2" "$3" "$seconds"
  else
    printf '%s %s: %d FAILED\n' "$1" "$2" "$4"
  fi
}

# count_junit FILE STATUS: passed, failed and skipped tests of one run of ctest. A run that ends
# badly without a failed test (no test of that kind, say) counts as one failure.
count_junit() {
  local tests=0 failures=0 skipped=0
  if [[ -f $1 ]]; then
    tests=$(grep -c '<testcase ' "$1")
    failures=$(grep -c '<testcase .* status="\(fail\|notrun\)' "$1")
    skipped=$(grep -c '<skipped' "$1")
  fi
  if [[ $failures -eq 0 && $2 -ne 0 ]]; then failures=1 tests=$((tests + 1)); fi
  echo $((tests - failures - skipped)) "$failures" "$skipped"
}

# note_retries CONFIGURATION LOG: remembers the tests of a run of ctest that failed at first and
# passed when they ran again.
note_retries() {
  local name
  while read -r name; do retried+=("$1: $name"); done < <(
    sed -nE 's/^ *([0-9]+\/[0-9]+ )?Test +#[0-9]+: ([^ ]+) .*(Failed|Timeout|Exception|Not Run).*/failed \2/p
             s/^ *([0-9]+\/[0-9]+ )?Test +#[0-9]+: ([^ ]+) .*Passed.*/passed \2/p' "$2" |
      awk '$1 == "failed" { failed[$2] = 1 } $1 == "passed" && failed[$2] { print $2 }')
}

report() {
  printf '\n%-10s %-12s %7s %7s %8s %7s\n' where kind passed failed skipped time
  printf '%s\n' "${rows[@]}"
  if [[ ${#retried[@]} -gt 0 ]]; then
    printf '\nFailed at first and passed when tried again:\n'
    printf '  %s\n' "${retried[@]}"
  fi
  printf '\nin %d min %d s\n' $((SECONDS / 60)) $((SECONDS % 60))
  printf '%d passed, %d failed, %d skipped\n' "$total_passed" "$total_failed" "$total_skipped"
  [[ $total_failed -eq 0 ]]
}
