# eval "$(kxhost completion bash)" in ~/.bashrc
_kxhost() {
  local line
  COMPREPLY=()
  compopt -o nospace
  while IFS= read -r line; do
    if [ "$line" = ":files" ]; then
      compopt -o default
      compopt +o nospace
    else
      COMPREPLY+=("${line%%$'\t'*}")
    fi
  done < <("${COMP_WORDS[0]}" completion bash -- "${COMP_LINE:0:COMP_POINT}" 2>/dev/null)
}
complete -F _kxhost kxhost
