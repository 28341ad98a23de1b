# bash completion for bfbr

_bfbr() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} command=${COMP_WORDS[1]}
  local inputs='-h --help --files-from -j --jobs --json --progress --timing -q --quiet --force -o --output'
  local outputs='--out-dir --sync' keys='--key-file --key-hex --marker' words=''
  COMPREPLY=()
  # "--option=value" comes as three words, or as one where "=" breaks none.
  if [[ $current == = ]]; then current=''; fi
  if [[ $previous == = ]]; then previous=${COMP_WORDS[COMP_CWORD-2]}; fi
  case $previous in
    --progress) words='auto always never' ;;
    --marker)
      words='keep require'
      if [ "$command" = decode ]; then words+=' strip'; fi
      ;;
    --out-dir)
      mapfile -t COMPREPLY < <(compgen -d -- "$current")
      return
      ;;
    -j | --jobs | --seconds | --key-hex) return ;;
    -o | --output | --files-from | --key-file)
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      return
      ;;
    *)
      if [ "$COMP_CWORD" -eq 1 ]; then
        words='encode decode verify inspect mark bench -h --help --version'
      elif [[ $current == -* ]]; then
        case $command in
          encode | mark) words="$inputs $outputs" ;;
          decode) words="$inputs $outputs $keys" ;;
          verify | inspect) words="$inputs $keys" ;;
          bench) words='-h --help --seconds --json' ;;
        esac
      fi
      ;;
  esac
  if [ -n "$words" ]; then
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
  elif [ "$command" != bench ]; then
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
}
complete -o filenames -F _bfbr bfbr
