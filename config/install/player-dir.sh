# Sourced by the installed launchers. The game reads and writes Data/ below
# its working directory, and the installed content is shared and read-only,
# so every player gets a folder of their own: the writable parts are real
# files and folders there, everything else is a link to the shared content.
# Uninstalling never touches this folder: records, ghosts and screenshots stay.

# bv_prepare SHARE_DIR: prints the player's folder after preparing it.
bv_prepare() {
    shared="$1/Data"
    base="${XDG_DATA_HOME:-}"
    # XDG_DATA_HOME counts only as an absolute path; a relative one is ignored.
    case "$base" in /*) ;; *) base="$HOME/.local/share" ;; esac
    home="$base/brontevalle"
    data="$home/Data"
    if ! mkdir -p "$data/Highscore" "$data/Ghosts" "$data/Screenshots"; then
        echo "brontevalle: cannot create $data" >&2
        return 1
    fi
    # The settings are copied once and are the player's from then on.
    if [ ! -e "$data/config.bvd" ]; then
        cp "$shared/config.bvd" "$data/config.bvd" && chmod u+w "$data/config.bvd" || return 1
    fi
    # Links left by an installation that has gone since.
    for link in "$data"/*; do
        if [ -L "$link" ] && [ ! -e "$link" ]; then rm -f "$link"; fi
    done
    for entry in "$shared"/*; do
        name=$(basename "$entry")
        case "$name" in
        config.bvd | gencon.bvd | blackbox.bvd | Highscore | Ghosts | Screenshots) continue ;;
        esac
        link="$data/$name"
        if [ -L "$link" ]; then
            [ "$(readlink "$link")" = "$entry" ] && continue
            rm -f "$link"
        elif [ -e "$link" ]; then
            continue # something the player put there: theirs
        fi
        ln -s "$entry" "$link" || return 1
    done
    printf '%s\n' "$home"
}
