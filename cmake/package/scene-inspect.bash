# Completes the options of scene-inspect in bash.
_scene_inspect() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    case $previous in
    --size)
        mapfile -t COMPREPLY < <(compgen -W "640x400 1280x800 1920x1200" -- "$current")
        return
        ;;
    --textures)
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -d -- "$current")
        return
        ;;
    esac
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(scene-inspect --help | grep -oE -- '^  --[a-z]+')" -- "$current")
    else
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
}
complete -F _scene_inspect scene-inspect
