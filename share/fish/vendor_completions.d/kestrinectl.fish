# fish completion for kestrinectl. Commands and options come from the help of the program.

# The long options of the command that is named by the arguments.
function __kestrinectl_options
    kestrinectl $argv --help 2>/dev/null | awk '
      /^  -/ { split(substr($0, 3), columns, /  +/); count = split(columns[1], names, /[ ,]+/)
               for (i = 1; i <= count; i++) if (names[i] ~ /^--/) print names[i] "\t" columns[2] }'
end

# The commands below the one that is named by the arguments.
function __kestrinectl_commands
    kestrinectl $argv --help 2>/dev/null |
        awk '/^Commands:/ { isList = 1; next } isList && /^  [a-z]/ { name = $1; $1 = ""; print name "\t" substr($0, 2) }'
end

# Names with a newline cannot be completed.
function __kestrinectl_sets
    for name in (kestrinectl sets list --names --null 2>/dev/null | string split0)
        string match -q -- "*"\n"*" $name; or printf '%s\n' $name
    end
end

function __kestrinectl_complete
    set -l words (commandline -opc)
    set -l current (commandline -ct)
    set -l previous $words[-1]
    set -l command $words[2]
    set -l sub $words[3]
    set -l count (count $words)
    switch $previous
        case --format
            set -l formats jpeg png tiff gif
            contains -- $command convert plan compare; and set -a formats webp jxl avif
            # The options of compare take several, with commas between them.
            set -l before ''
            test "$command" = compare; and set before (string match -r '^.*,' -- $current; or echo '')
            printf '%s\n' $before$formats
            return
        case --isolation
            printf '%s\n' auto strict off
            return
        case --gravity
            printf '%s\n' center north northeast east southeast south southwest west northwest
            return
        case --metadata
            printf '%s\n' none rights exif all
            return
        case --times
            printf '%s\n' keep taken now
            return
        case --effort
            printf '%s\n' fast normal max
            return
        case --profile
            printf '%s\n' keep srgb
            return
        case --pad --background
            printf '%s\n' white black gray red green blue yellow silver
            return
        case --set
            __kestrinectl_sets
            return
        case --list
            printf '%s\n' sources results
            return
        case --out --output -o --files-from --manifest --root --log
            __fish_complete_path $current
            return
        case --width --height --percent --longest --fit --cover --quality --max-bytes --name --jobs --max-pixels \
            --include --exclude --shard --shards -j
            return
    end
    if test $count -eq 1
        if string match -q -- '-*' $current
            __kestrinectl_options
        else
            __kestrinectl_commands
        end
    else if test "$command" = help
        test $count -eq 2; and __kestrinectl_commands; or __kestrinectl_commands $sub
    else if contains -- "$command" sets desktop; and test $count -eq 2
        __kestrinectl_commands $command
    else if string match -q -- '-*' $current
        contains -- "$command" sets desktop; and __kestrinectl_options $command $sub; or __kestrinectl_options $command
    else if test "$command" = undo
        kestrinectl history 2>/dev/null | cut -d ' ' -f 1
    else if test "$command" = sets; and begin
            contains -- $sub show edit remove select export; or test "$sub" = preview -a $count -eq 3
        end
        __kestrinectl_sets
    else if not contains -- "$command" sets desktop; or contains -- "$sub" import preview
        __fish_complete_path $current
    end
end

complete -c kestrinectl -f -a '(__kestrinectl_complete)'
