# fish completion for scenetool. Takes commands and options from its help.

function __scenetool_commands
    scenetool --help 2>/dev/null | sed -n '/^Subcommands:/,$s/^  \([a-z][a-z-]*\)  *\(.*\)/\1\t\2/p'
end

function __scenetool_options
    set -l words (commandline -opc)
    test (count $words) -ge 2; and scenetool $words[2] --help 2>/dev/null | grep -oE -- '--?[a-zA-Z][a-zA-Z-]*' | sort -u
end

complete -c scenetool -n __fish_use_subcommand -f -a '(__scenetool_commands)'
complete -c scenetool -n __fish_use_subcommand -l help -d 'Explain the commands'
complete -c scenetool -n __fish_use_subcommand -l version -d 'Print the version'
complete -c scenetool -n 'not __fish_use_subcommand; and string match -q -- "-*" (commandline -ct)' -f -a '(__scenetool_options)'
