# shellcheck shell=bash
# What the stand-ins of a release have in common. Sourced: notes the call, then does what a case tells this tool to do
# instead, in the file $ANSWERS/TOOL-WORD, if one of the words is WORD.
export LC_ALL=C
tool=${0##*/}
printf '%s %s\n' "$tool" "$*" >>"$CALLS"

# refuse TEXT [STATUS]
refuse() {
  printf '%s\n' "$1" >&2
  exit "${2-1}"
}

for word in "$@"; do
  # shellcheck disable=SC1090
  if [ "${word#*/}" = "$word" ] && [ -f "$ANSWERS/$tool-$word" ]; then source "$ANSWERS/$tool-$word"; fi
done

# The programs that are handled here are texts. A line says which processor they run on, what they are linked with, or
# that their symbols are in them.
linesOf() { sed -n "s/^$1 //p" "$2"; }
needProgram() { if ! grep -q '^processor ' "$1" 2>/dev/null; then refuse "error: $tool: $1: not a Mach-O file"; fi; }
sealOf() { cksum <"$1"; }
mainProgramOf() { sed -n '/<key>CFBundleExecutable</{n;s,.*<string>\(.*\)</string>.*,\1,p;}' "$1/Contents/Info.plist"; }
