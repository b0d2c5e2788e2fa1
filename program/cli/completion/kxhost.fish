# kxhost completion fish | source, in ~/.config/fish/config.fish
function __kxhost_complete
    set -l line (commandline -cp)
    for found in (kxhost completion fish -- "$line" 2>/dev/null)
        if test "$found" = ":files"
            set -l typed (commandline -ct)
            set -l front (string match -r '^.*=' -- $typed)
            for path in (__fish_complete_path (string replace -r '^.*=' '' -- $typed))
                echo $front$path
            end
        else
            echo $found
        end
    end
end
complete -c kxhost -f -a '(__kxhost_complete)'
