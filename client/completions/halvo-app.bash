# shellcheck shell=bash
# Completion of halvo-app for bash 3.2 and later. Where nothing is offered, bash completes names of files.

# The request among the words before the cursor; "legacy" as long as its request is missing.
_halvo_app_request() {
  local i word request=""
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${COMP_WORDS[i]}
    case "$word" in
      --manifest | --timeout)
        # Bash makes a word of the equals sign, and one of what follows it.
        if [ "${COMP_WORDS[i + 1]}" = = ]; then ((++i)); fi
        ((++i))
        ;;
      -*) ;;
      legacy) request=$word ;;
      *)
        printf '%s\n' "$word"
        return
        ;;
    esac
  done
  printf '%s\n' "$request"
}

_halvo_app() {
  local word=${COMP_WORDS[COMP_CWORD]} request words="" offered
  COMPREPLY=()
  case "${COMP_WORDS[COMP_CWORD - 1]}" in
    --manifest | --timeout | =) return ;;
  esac
  request=$(_halvo_app_request)
  case "$word:$request" in
    -*:register | -*:unregister) words="--help --version" ;;
    -*:status) words="--help --version --open-settings" ;;
    -*:*)
      words="--help --version --timeout"
      case "$request" in
        install) words+=" --manifest --accept-audio-interruption --without-grant --without-checks" ;;
        uninstall) words+=" --accept-audio-interruption --without-grant --without-checks" ;;
        prepare-removal) words+=" --accept-audio-interruption --without-grant" ;;
        remove-bundle) words+=" --without-grant --without-checks" ;;
        finalize) words+=" --without-grant" ;;
        doctor) words+=" --json" ;;
      esac
      ;;
    *:) words="ping users doctor install uninstall prepare-removal remove-bundle finalize register unregister status legacy" ;;
    *:legacy) words="install prepare-removal remove-bundle finalize" ;;
  esac
  while IFS= read -r offered; do COMPREPLY+=("$offered"); done < <(compgen -W "$words" -- "$word")
}

complete -o bashdefault -o default -F _halvo_app halvo-app
