# Completion of sigilctl for bash.

_sigilctl() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command='' i
  local commands='init check diff preview update set release release-for-service exclude content-log
    show log seal unseal serve verify report doctor'
  COMPREPLY=()
  for ((i = 1; i < COMP_CWORD; ++i)); do
    if [[ " $commands " == *[[:space:]]"${COMP_WORDS[i]}"[[:space:]]* ]]; then
      command=${COMP_WORDS[i]}
      break
    fi
  done

  local words=
  case "$command $before $word" in
    *' --root '*) compopt -o dirnames; return ;;
    *' --paper '*) words='A3 A4 Letter' ;;
    *' --level '*) words='trace detail progress info warning error' ;;
    *' --policy-id '* | *' --printer '* | *' --since '*) return ;;
    ' '*' -'*) words='--root --help --version' ;;
    'check '*' -'*) words='--root --help --policy-id --paper --landscape --json' ;;
    'diff '*' -'*) words='--root --help --policy-id' ;;
    'preview '*' -'*) words='--root --help --policy-id --printer --output --paper --landscape --plain' ;;
    'update '*' -'*) words='--root --help --policy-id --reset-name --force --strict --verbose' ;;
    'show '*' -'*) words='--root --help --json --no-ids --brief --printer' ;;
    'log '*' -'*) words='--root --help --follow --level --since' ;;
    'seal '*' -'*) words='--root --help --output --force --strict' ;;
    'unseal '*' -'*) words='--root --help --output' ;;
    'verify '*' -'*) words='--root --help --policy-id --json' ;;
    'report '*' -'*) words='--root --help --output --policy-id' ;;
    'doctor '*' -'*) words='--root --help --json' ;;
    'set '*' -'* | 'release'*' -'* | 'exclude '*' -'* | 'content-log '*' -'*) words='--root --help --verbose' ;;
    *' -'*) words='--root --help' ;;
    ' '*) words=$commands ;;
    'content-log '*) words='on off' ;;
    'init '*) compopt -o dirnames; return ;;
    'check '* | 'diff '* | 'preview '* | 'update '* | 'seal '* | 'unseal '* | 'verify '* | 'report '*)
      compopt -o default
      return
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}

complete -F _sigilctl sigilctl
