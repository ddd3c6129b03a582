# Completion of kolvex for bash. What may stand where is the programs' own knowledge: they answer `--complete`.

# Puts a word of the line without its quotes into REPLY. Of expansions only that of a tilde at its begin is done: nothing
# that is still being typed is run.
_kolvex_unquote() {
  local word=$1 quote='' char i
  REPLY=''
  # shellcheck disable=SC2088
  if [[ $word == '~/'* ]]; then
    REPLY=$HOME
    word=${word:1}
  fi
  for ((i = 0; i < ${#word}; i++)); do
    char=${word:i:1}
    case $quote$char in
      \' | \") quote=$char ;;
      \'\' | \"\") quote='' ;;
      \\ | \"\\)
        i=$((i + 1))
        REPLY+=${word:i:1}
        ;;
      *) REPLY+=$char ;;
    esac
  done
}

# Puts the words behind the command into `words`, and which of them is being typed into `at`. Bash cuts words at "=" and
# ":" as well: `before` gets what stands of the word before the piece that bash will replace, without an option's name.
_kolvex_read_line() {
  local i word is_glued=''
  words=() at=0 before=''
  for ((i = 1; i < ${#COMP_WORDS[@]}; i++)); do
    word=${COMP_WORDS[i]}
    if ((${#words[@]})) && [[ $is_glued || $word == : || ($word == '=' && ${words[-1]} == --*) ]]; then
      words[-1]+=$word
    else
      words+=("$word")
    fi
    is_glued=''
    if [[ $word == : || ($word == '=' && ${words[-1]} == --*) ]]; then is_glued=yes; fi
    if ((i == COMP_CWORD)); then
      at=$((${#words[@]} - 1))
      # A separator that was typed last is kept as well.
      if [[ $is_glued ]]; then before=${words[-1]}; else before=${words[-1]%"$word"}; fi
      if [[ $before == --*=* ]]; then before=${before#*=}; fi
    fi
  done
}

_kolvex() {
  local words at before i answer program word REPLY
  _kolvex_read_line
  for i in "${!words[@]}"; do
    _kolvex_unquote "${words[i]}"
    words[i]=$REPLY
  done
  _kolvex_unquote "${COMP_WORDS[0]}"
  program=$REPLY
  mapfile -t answer < <("$program" --complete "$at" "${words[@]}" 2>/dev/null)
  COMPREPLY=()
  for word in "${answer[@]:1}"; do
    # Behind an open quote bash takes it as it is.
    if [[ ${COMP_WORDS[COMP_CWORD]} != [\'\"]* ]]; then printf -v word %q "$word"; fi
    COMPREPLY+=("${word#"$before"}")
  done
  case ${answer[0]-} in
    file) compopt -o default 2>/dev/null ;;
    directory) compopt -o dirnames 2>/dev/null ;;
  esac
}

complete -F _kolvex kolvex
