# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# shellcheck disable=SC2154 # "scratch" and "workbench_pid" are those of workbench.sh.
#
# To be sourced, after workbench.sh. Brings up tips of the running workbench with a real pointer and
# takes pictures of them.

# The pointer has to be found on the control by Qt, whose own delay before a tooltip is 700 ms.
popup_seconds=15

# Two steps: a pointer that jumps to its place and stays there has entered, but it has not moved.
rest_pointer_on() {
    local key=$1 x y width height
    read -r x y width height < <(field "$scratch/controls" "$key") ||
        fail "there is no control with the key $key"
    xdotool mousemove $((x + width / 2 - 2)) $((y + height / 2 - 1))
    xdotool mousemove $((x + width / 2)) $((y + height / 2))
}

# Tips follow the pointer only inside the windows of the program.
leave_controls() {
    local x y height
    read -r x y _ height < <(field "$scratch/controls" statusBar) || fail 'there is no status bar'
    xdotool mousemove $((x + 8)) $((y + height / 2)) mousemove $((x + 4)) $((y + height / 2))
}

# popup_fact WHAT KEY: what the program says about a popup, where there is such a line.
popup_fact() {
    awk -v what="$1" -v key="$2" \
        '$1 == what && $2 == key { $1 = $2 = ""; print substr($0, 3); exit }' "$scratch/popup"
}

# window_of KEY [STATE]: the number of the popup's window; fails unless this key is on show.
window_of() {
    local window
    kill -0 "$workbench_pid" 2>/dev/null || fail 'the workbench has ended'
    read -r window _ < <(popup_fact "${2:-tip}" "$1") || return 1
    [[ -n $window ]] && printf '%d\n' "$window"
}

# The program says that it has painted the tip for the key, and the X server says that the window
# can be seen.
#
#   popup_is_up KEY [STATE]
popup_is_up() {
    local window
    window=$(window_of "$@") || return 1
    xwininfo -id "$window" 2>/dev/null | grep -q 'Map State: IsViewable'
}

# A window manager needs a moment to let go of a window that has been hidden. One that is shown
# again before that lands in the corner of the screen.
popup_is_gone() {
    ! grep -q '^tip ' "$scratch/popup" &&
        [[ $(xprop -id "$1" WM_STATE 2>/dev/null) != *'window state: Normal'* ]]
}

# A tip of one colour has nothing in it.
picture_shows_something() {
    (($(identify -format '%k' "$1") > 8))
}

# window_geometry WINDOW: "x y width height", as the X server knows them.
window_geometry() {
    xwininfo -id "$1" | awk '
        /Absolute upper-left|Width:|Height:/ { printf "%s ", $NF }
        END { print "" }'
}

# take_screen NAME: the whole screen, with no part of a window missing.
take_screen() {
    import -window root "$scratch/$1.png"
}

# take_picture KEY FILE: the tip with some of its surroundings.
take_picture() {
    local key=$1 file=$2 around=40 window x y width height
    window=$(window_of "$key") || return 1
    read -r x y width height < <(window_geometry "$window")
    take_screen screen
    convert "$scratch/screen.png" -crop "${width}x${height}+$x+$y" +repage "$scratch/tip.png"
    picture_shows_something "$scratch/tip.png" || return 1
    convert "$scratch/screen.png" \
        -crop "$((width + 2 * around))x$((height + 2 * around))+$((x - around))+$((y - around))" \
        +repage "$file"
}

# bring_up KEY: rests the pointer on the control until its tip is there.
bring_up() {
    rest_pointer_on "$1"
    wait_until "$popup_seconds" popup_is_up "$1" || fail "no tip came up for the key $1"
}

# send_away KEY: waits off the controls until the tip has faded, since it may cover the next control.
send_away() {
    local window
    window=$(window_of "$1") || fail "the tip for the key $1 went too early"
    leave_controls
    wait_until "$popup_seconds" popup_is_gone "$window" || fail "the tip for the key $1 did not go"
}

# picture_tip KEY FILE: of the tip that is up.
picture_tip() {
    wait_until "$popup_seconds" take_picture "$1" "$2" || fail "the tip for the key $1 stayed empty"
    printf '%s\n' "$2"
}
