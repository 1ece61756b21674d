# Written by packaging/completion/renew from what interlock-trace --help says.
_interlock_trace() {
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
         explain) command=${COMP_WORDS[1]} ;;
      esac
   else
      words='explain'
   fi
   case $command:$before in
      :--output) kind=value words='text jsonl' ;;
      :--color) kind=value words='auto always never' ;;
      :--level | :--function | :--intf | :--since | :--until | :--last) kind=value words= ;;
      :*) options='--version --help --output --jsonl --color --level --function --intf --since --until --last --follow' ;;
      explain:--output) kind=value words='text jsonl' ;;
      explain:--at) kind=value words= ;;
      explain:*) options='--help --output --at' ;;
   esac
   [[ $word != -* ]] || kind=value words=$options
   mapfile -t COMPREPLY < <( compgen -W "$words" -- "$word" )
   if [[ $kind == file ]]; then
      compopt -o filenames 2> /dev/null
      mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <( compgen -f -- "$word" )
   fi
}
complete -F _interlock_trace interlock-trace
