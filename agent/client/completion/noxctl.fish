# Completion of noxctl for fish: noxctl itself knows what may come next.

function __noxctl_complete
    set -l words (commandline --tokenize --cut-at-cursor --current-process)
    set -l current (commandline --current-token --cut-at-cursor)
    set -l option (string match --regex -- '^--[^=]*=' "$current")
    set -l value (string replace --regex -- '^--[^=]*=' '' "$current")
    for candidate in ($words[1] __complete $words[2..-1] "$current" 2>/dev/null)
        switch $candidate
            case :files
                __fish_complete_path "$value" | string replace --regex -- '^' "$option"
            case :directories
                __fish_complete_directories "$value" '' | string replace --regex -- '^' "$option"
            case '*'
                printf '%s\n' "$option$candidate"
        end
    end
end

complete --command noxctl --no-files --arguments '(__noxctl_complete)'
