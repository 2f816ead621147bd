# fish completion for orvane-cli

# The names in the file of export profiles, one on each line.
function __orvane_cli_profiles
    set -l data $HOME/.local/share
    string match --quiet '/*' -- "$XDG_DATA_HOME"; and set data $XDG_DATA_HOME
    test (uname) = Darwin; and set data "$HOME/Library/Application Support"
    # What JSON escapes, %b knows too, but for quote and slash.
    grep -oE '"name"[[:space:]]*:[[:space:]]*"([^"\\\\]|\\\\.)*"' $data/Orvane/exportProfiles.json 2>/dev/null |
        sed -E 's|^"name"[[:space:]]*:[[:space:]]*"(.*)"$|\1|; s/\\\\(["/])|(\\\\\\\\)/\1\2/g' |
        while read --local string
            printf '%b\n' $string
        end
end

function __orvane_cli_creates_profile
    set -l words (commandline --tokenize --cut-at-cursor --current-process)
    test "$words[2]" = --create-profile
end

function __orvane_cli_may_create_profile
    test (count (commandline --tokenize --cut-at-cursor --current-process)) -eq 1
    or __orvane_cli_creates_profile
end

complete -c orvane-cli -n __orvane_cli_creates_profile -f
complete -c orvane-cli -l quality -x -d 'Qualité de compression, de 1 à 100'
complete -c orvane-cli -l format -x -a 'png jpeg heic avif webp jxl' -d 'Format des résultats'
complete -c orvane-cli -l output -x -a '(__fish_complete_directories)' -d 'Dossier de destination'
complete -c orvane-cli -n 'not __orvane_cli_creates_profile' -l profile -x -a '(__orvane_cli_profiles)' -d "Profil d'export"
complete -c orvane-cli -n 'not __orvane_cli_creates_profile' -l jobs -x -d 'Fichiers traités en parallèle'
complete -c orvane-cli -n 'not __orvane_cli_creates_profile' -l json -d 'Sortie JSON'
complete -c orvane-cli -n 'not __orvane_cli_creates_profile' -s h -l help -d "Affiche l'aide"
complete -c orvane-cli -n __orvane_cli_may_create_profile -l create-profile -x -a '(__orvane_cli_profiles)' -d "Crée ou met à jour un profil d'export"
