# Completion of h265tool for bash: verbs, their options, the values of options that have a fixed set, else files.
# shellcheck shell=bash

_h265tool() {
  # "--option=value" arrives as three words.
  local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  if [[ $current == "=" ]]; then
    current=""
  elif [[ $before == "=" ]]; then
    before=${COMP_WORDS[COMP_CWORD - 2]}
  fi

  local verb="" word
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ $word != -* ]]; then
      verb=$word
      break
    fi
  done

  local options="" values=""
  case $verb in
    "")
      options="-h --help --version"
      values="inspect extract show insert edit"
      ;;
    inspect) options="-h --help --json --color --human --human-readable" ;;
    extract) options="-h --help --json --captions --timecodes --afd" ;;
    show) options="-h --help --vps --sps --pps --sei --level --all --tags" ;;
    insert)
      options="-h --help -o --output --captions --captions-start --afd --timecode --precision-time --pic-timing --rate
        --aud --eos --replace"
      ;;
    edit)
      options="-h --help -o --output --interlaced --size --crop --sar --colour --range --timing --fps --field-seq
        --pic-struct --hrd"
      ;;
  esac

  COMPREPLY=()
  case $verb:$before in
    inspect:--color) values="auto always never" ;;
    show:--level) values="0 1 2 3 4 5 6 7 8" ;;
    insert:--afd) values="0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15" ;;
    edit:--range) values="full limited" ;;
    edit:--pic-struct) values="0 1 2 3 4 5 6 7 8 9 10 11 12" ;;
    # anything may be written here, and no file
    insert:--captions-start | insert:--timecode | insert:--precision-time | insert:--pic-timing | insert:--rate) return ;;
    edit:--size | edit:--crop | edit:--sar | edit:--colour | edit:--timing | edit:--fps) return ;;
    *) [[ $current != -* ]] || values=$options ;;
  esac
  if [[ -n $values ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$values" -- "$current")
  else
    compopt -o filenames 2>/dev/null # an error when no completion is going on
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
} && complete -F _h265tool h265tool
