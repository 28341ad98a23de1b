# fish completion for bfbr

set -l files encode decode verify inspect mark
set -l all $files bench
set -l none "not __fish_seen_subcommand_from $all"
set -l on_files "__fish_seen_subcommand_from $files"
set -l makes "__fish_seen_subcommand_from encode decode mark"
set -l opens "__fish_seen_subcommand_from decode verify inspect"
set -l bench "__fish_seen_subcommand_from bench"

complete -c bfbr -n $none -f -a encode -d 'Make a container of each file'
complete -c bfbr -n $none -f -a decode -d "Deliver a container's payload if its digest holds"
complete -c bfbr -n $none -f -a verify -d 'Check containers, deliver nothing'
complete -c bfbr -n $none -f -a inspect -d 'Tell what is known of containers'
complete -c bfbr -n $none -f -a mark -d 'Put the signature marker before the data'
complete -c bfbr -n $none -f -a bench -d 'Measure the library on this machine'
complete -c bfbr -n $none -l version -d 'Print the version'
complete -c bfbr -s h -l help -d 'Print help'

complete -c bfbr -n $on_files -l files-from -r -d 'Read more names from a file'
complete -c bfbr -n $on_files -s j -l jobs -x -d 'Files worked on at the same time'
complete -c bfbr -n "$on_files; or $bench" -l json -d 'Print JSON objects, one a line'
complete -c bfbr -n $on_files -l progress -x -a 'auto always never' -d 'When to show the progress'
complete -c bfbr -n $on_files -l timing -d 'Print where the time went'
complete -c bfbr -n $on_files -s q -l quiet -d 'Print errors only'
complete -c bfbr -n $on_files -l force -d 'Replace files that are there'
complete -c bfbr -n $on_files -s o -l output -r -d 'Write to this file'
complete -c bfbr -n $makes -l out-dir -x -a '(__fish_complete_directories)' -d 'Write into this directory'
complete -c bfbr -n $makes -l sync -d 'Have the disk hold each file before it appears'
complete -c bfbr -n $opens -l key-file -r -d 'The bytes of this file are the key'
complete -c bfbr -n $opens -l key-hex -x -d 'The key in hexadecimal digits'
complete -c bfbr -n $opens -l marker -x -a 'keep require' -d 'The signature marker'
complete -c bfbr -n '__fish_seen_subcommand_from decode' -l marker -x -a strip -d 'The signature marker'
complete -c bfbr -n $bench -f -l seconds -x -d 'Time for each figure'
