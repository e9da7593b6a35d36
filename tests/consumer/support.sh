# shellcheck shell=bash
# What the tests of building and installing have in common. Sourced; makes a scratch folder. For the bash 3.2 of macOS.
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failures=0
status=0
output=""

run() {
  status=0
  output=$("$@" 2>&1) || status=$?
}

expect() {
  if "${@:2}"; then return; fi
  failures=$((failures + 1))
  printf 'FAILED: %s\n  status %s, output:\n%s\n' "$1" "$status" "$output"
}

statusIs() { [ "$status" -eq "$1" ]; }
said() { [[ $output == *"$1"* ]]; }
not() { ! "$@"; }

# Ends the test program.
report() {
  if [ "$failures" -ne 0 ]; then
    printf '%d expectation(s) failed\n' "$failures"
    exit 1
  fi
  echo "all expectations hold"
}
