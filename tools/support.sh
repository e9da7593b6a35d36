# shellcheck shell=bash
# What the scripts of this repository have in common. Sourced by bash scripts that set PROGRAM, their name in messages.

say() { printf '%s: %s\n' "$PROGRAM" "$*"; }

# One sentence: what went wrong and what to do about it.
fail() {
  printf '%s: %s\n' "$PROGRAM" "$*" >&2
  exit 1
}

usageError() {
  printf '%s: %s\n' "$PROGRAM" "$*" >&2
  exit 64
}

coreCount() { getconf _NPROCESSORS_ONLN; }

# Every text file of the repository, also those not committed yet, one a line. A copy without its history has no index:
# there everything outside build/ counts.
repositoryFiles() {
  if [ -e .git ]; then
    # Continuous integration often runs as another user than the one who owns the checkout.
    git -c safe.directory='*' ls-files --cached --others --exclude-standard | while IFS= read -r file; do
      if [ -f "$file" ]; then printf '%s\n' "$file"; fi
    done
  else
    find . -path ./build -prune -o -type f -printf '%P\n'
  fi | LC_ALL=C sort
}

# The product's own C++ sources, without tests and what only they use.
productSources() {
  repositoryFiles | grep -E '^(HalvoHelperXPC|HalvoHelper|main|platform|transport|client)/.*\.cpp$' |
    grep -v -E 'Test\.cpp$|/testing/|/contract/'
}

# Runs a command with the randomisation of addresses switched off where that is allowed. The thread sanitizer of GCC 12
# refuses to start under kernels that spread mappings wider than it expects.
withFixedAddresses() {
  if command -v setarch >/dev/null && setarch -R true 2>/dev/null; then
    setarch -R "$@"
  else
    "$@"
  fi
}
