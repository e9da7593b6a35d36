# shellcheck shell=bash
# What the packaging scripts have in common. Sourced; PROGRAM is the script's name in messages and `here` its folder.
# Kept to what the bash 3.2 of macOS understands.

say() { printf '%s: %s\n' "$PROGRAM" "$*"; }

fail() {
  printf '%s: %s\n' "$PROGRAM" "$*" >&2
  exit 1
}

usageError() {
  printf '%s: %s; see %s --help\n' "$PROGRAM" "$*" "$PROGRAM" >&2
  exit 64
}

# The value of an option: needValue --team "$@" where $@ begins with the option itself.
needValue() {
  if [ $# -lt 2 ] || [ -z "$2" ]; then usageError "$1 needs a value"; fi
}

needTool() {
  local tool
  for tool in "$@"; do
    command -v "$tool" >/dev/null || fail "$tool is missing; run this on a Mac with Xcode's command line tools"
  done
}

# The one place that names the version is the project's build file.
projectVersion() {
  # shellcheck disable=SC2154  # `here` is the script's
  local file=$here/../CMakeLists.txt version
  version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' "$file")
  if [ -z "$version" ]; then fail "$file names no version"; fi
  printf '%s\n' "$version"
}

kHelperIdentifier=com.halvo.helper
kAppIdentifier=com.halvo.app
kHelperInBundle=Contents/MacOS/halvo-helper
kPlistInBundle=Contents/Library/LaunchDaemons/com.halvo.helper.plist
export kHelperIdentifier kAppIdentifier kHelperInBundle kPlistInBundle
