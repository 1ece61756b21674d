# Written by packaging/completion/renew from what interlock-replay --help says.
_interlock_replay() {
   local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
   local command= options= kind=file words=
   # --option=value comes as three words
   if [[ $word == = ]]; then
      word=
   elif [[ $before == = ]]; then
      before=${COMP_WORDS[COMP_CWORD - 2]}
   fi
   if (( COMP_CWORD > 1 )); then
      case ${COMP_WORDS[1]} in
         explain | import) command=${COMP_WORDS[1]} ;;
      esac
   else
      words='explain import'
   fi
   case $command:$before in
      :--output) kind=value words='text jsonl' ;;
      :--clock) kind=value words='virtual real' ;;
      :--color) kind=value words='auto always never' ;;
      :--trace-file | :--timeline) kind=file words= ;;
      :--trace) kind=value words= ;;
      :*) options='--version --help --output --trace --ring --trace-file --timeline --summary --clock --color --quiet' ;;
      explain:--output) kind=value words='text jsonl' ;;
      explain:--switch) kind=value words='left right' ;;
      explain:--at) kind=value words= ;;
      explain:*) options='--help --output --at --switch' ;;
      import:*) options='--help' ;;
   esac
   [[ $word != -* ]] || kind=value words=$options
   mapfile -t COMPREPLY < <( compgen -W "$words" -- "$word" )
   if [[ $kind == file ]]; then
      compopt -o filenames 2> /dev/null
      mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <( compgen -f -- "$word" )
   fi
}
complete -F _interlock_replay interlock-replay
