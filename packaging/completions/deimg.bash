# bash completion for deimg

_deimg() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command=${COMP_WORDS[1]}
  local commands='develop preview thumbnail info check version help'
  local batch='--help --jobs --threads --progress'
  local picture='--wb --exposure --tone --saturation --colour'
  local output='--output --format --quality --resolution --force --skip-existing'
  local options

  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W "$commands --help --version" -- "$word")
    return
  fi

  case $previous in
    --format) mapfile -t COMPREPLY < <(compgen -W 'png tiff jpeg ppm' -- "$word"); return ;;
    --depth) mapfile -t COMPREPLY < <(compgen -W '8 16' -- "$word"); return ;;
    --progress) mapfile -t COMPREPLY < <(compgen -W 'none bar json' -- "$word"); return ;;
    --tone | --saturation | --colour)
      mapfile -t COMPREPLY < <(compgen -W '-1 0 1 recorded' -- "$word"); return ;;
    --processing-set)
      mapfile -t COMPREPLY < <(compgen -W '-1 0 1 quick recorded' -- "$word"); return ;;
    --wb)
      mapfile -t COMPREPLY < <(compgen -W 'recorded preset: point: gains:' -- "$word")
      [[ ${COMPREPLY[0]} == *: ]] && compopt -o nospace
      return ;;
    --exposure | --quality | --resolution | --size | -j | --jobs | --threads) return ;;
  esac

  case $command in
    develop)
      options="$batch $output $picture --depth --processing-set --plain --no-colour-median --quick" ;;
    preview) options="$batch $output $picture" ;;
    thumbnail) options="$batch $output $picture --size" ;;
    info) options='--help --json' ;;
    check) options=$batch ;;
    help)
      mapfile -t COMPREPLY < <(compgen -W "$commands codes" -- "$word")
      return ;;
    *) options='--help' ;;
  esac
  if [[ $word == -?* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
  else
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  fi
}

complete -F _deimg deimg
