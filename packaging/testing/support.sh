# shellcheck shell=bash
# What the tests of the packaging scripts have in common. Sourced; makes a scratch folder and puts the stand-ins for the
# Mac's tools in front of the real ones. Every call of a stand-in is a line of $CALLS.
testing=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export CALLS=$scratch/calls SIGNATURES=$scratch/signatures ANSWERS=$scratch/answers
mkdir "$scratch/bin"
PATH=$scratch/bin:$testing/tools:$PATH
failures=0
status=0
output=""

# Stand-ins that answer as a case tells them: the file $ANSWERS/TOOL-WORD is run in place of the tool if one of its
# arguments is WORD.
scriptedTools() {
  local tool
  for tool in "$@"; do
    cat >"$scratch/bin/$tool" <<'STANDIN'
#!/usr/bin/env bash
tool=$(basename "$0")
printf '%s %s\n' "$tool" "$*" >>"$CALLS"
for word in "$@"; do
  # shellcheck disable=SC1090
  if [ -f "$ANSWERS/$tool-$word" ]; then source "$ANSWERS/$tool-$word"; fi
done
STANDIN
    chmod +x "$scratch/bin/$tool"
  done
}

answer() { printf '%s\n' "$2" >"$ANSWERS/$1"; }

# Before each case: nothing was called, signed or told.
forgetEverything() {
  rm -rf "$SIGNATURES" "$ANSWERS"
  mkdir "$SIGNATURES" "$ANSWERS"
  : >"$CALLS"
}

run() {
  status=0
  output=$("$@" 2>&1) || status=$?
}

expect() {
  if "${@:2}"; then return; fi
  failures=$((failures + 1))
  printf 'FAILED: %s\n  status %s, output:\n%s\n  calls:\n%s\n' "$1" "$status" "$output" "$(cat "$CALLS")"
}

statusIs() { [ "$status" -eq "$1" ]; }
said() { [[ $output == *"$1"* ]]; }
not() { ! "$@"; }
calledWith() { grep -q -F -e "$1" "$CALLS"; }
# The calls of one tool, in order and whole.
calls() { [ "$(grep "^$1 " "$CALLS" || true)" = "$2" ]; }

# Ends the test program.
report() {
  if [ "$failures" -ne 0 ]; then
    printf '%d expectation(s) failed\n' "$failures"
    exit 1
  fi
  echo "all expectations hold"
}
