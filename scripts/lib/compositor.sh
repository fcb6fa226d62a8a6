# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# To be sourced, after display.sh. A Wayland compositor in a window that fills the X display.
#
# Needs the Debian packages weston, qt6-wayland, xdotool and x11-utils.

compositor_pid=
compositor_scratch=

compositor_answers() {
    [[ -S $compositor_scratch/vidlets-0 ]]
}

compositor_window() {
    [[ $(xwininfo -root -children) == *'Weston Compositor'* ]]
}

# start_compositor: exports WAYLAND_DISPLAY and XDG_RUNTIME_DIR. Its window fills the display, so that
# both count pixels alike.
start_compositor() {
    compositor_scratch=$(mktemp -d)
    chmod 700 "$compositor_scratch"
    export XDG_RUNTIME_DIR=$compositor_scratch
    # No panel and no animation: a picture of the screen shows what the program has drawn.
    cat >"$compositor_scratch/weston.ini" <<'CONFIGURATION'
[core]
idle-time=0
[shell]
panel-position=none
background-color=0xff204060
animation=none
startup-animation=none
close-animation=none
CONFIGURATION
    local width height
    read -r width height < <(xdotool getdisplaygeometry)
    weston --backend=x11-backend.so --use-pixman --width="$width" --height="$height" \
        --socket=vidlets-0 --config="$compositor_scratch/weston.ini" >"$compositor_scratch/weston.log" 2>&1 &
    compositor_pid=$!
    if ! wait_until 20 compositor_answers || ! wait_until 20 compositor_window; then
        printf 'error: the compositor did not start\n' >&2
        cat "$compositor_scratch/weston.log" >&2
        return 1
    fi
    export WAYLAND_DISPLAY=vidlets-0
}

# stop_compositor: safe to call at any time, also when nothing was started.
stop_compositor() {
    stop_process "$compositor_pid"
    compositor_pid=
    if [[ -n $compositor_scratch ]]; then
        rm -rf "$compositor_scratch"
        compositor_scratch=
        unset WAYLAND_DISPLAY XDG_RUNTIME_DIR
    fi
}
