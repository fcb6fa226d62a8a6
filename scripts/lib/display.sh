# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# To be sourced. A virtual X display with a window manager on it, for as long as a script needs it.
#
#   source "$root/scripts/lib/display.sh"
#   trap stop_display EXIT
#   start_display
#
# Needs the Debian packages xvfb, openbox and x11-utils.

display_server_pid=
display_manager_pid=
display_scratch=

# wait_until SECONDS COMMAND...: polls the command until it succeeds; fails when time runs out.
wait_until() {
    local deadline=$((SECONDS + $1))
    shift
    until "$@"; do
        if ((SECONDS >= deadline)); then
            return 1
        fi
        sleep 0.05
    done
}

# have_display: whether there is a screen of the user's own.
have_display() {
    [[ -n ${DISPLAY:-} || -n ${WAYLAND_DISPLAY:-} ]]
}

display_number_is_known() {
    [[ -s $display_scratch/number ]] || ! kill -0 "$display_server_pid" 2>/dev/null
}

window_manager_answers() {
    [[ $(xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null) == *'window id'* ]]
}

# start_display [WIDTHxHEIGHTxDEPTH]: exports DISPLAY.
start_display() {
    start_display_server "$@"
    start_window_manager
}

# start_display_server [WIDTHxHEIGHTxDEPTH]: the screen alone. Exports DISPLAY. The server picks a
# free number itself, so that scripts can run side by side.
start_display_server() {
    local size=${1:-1280x800x24}
    display_scratch=$(mktemp -d)
    # Without -noreset the server starts over when its last client leaves, which the first question to
    # the window manager is.
    Xvfb -displayfd 3 -screen 0 "$size" -nolisten tcp -noreset \
        3>"$display_scratch/number" >"$display_scratch/xvfb.log" 2>&1 &
    display_server_pid=$!
    if ! wait_until 20 display_number_is_known || [[ ! -s $display_scratch/number ]]; then
        printf 'error: the virtual display did not start\n' >&2
        cat "$display_scratch/xvfb.log" >&2
        return 1
    fi
    DISPLAY=:$(<"$display_scratch/number")
    export DISPLAY
}

# Without a window manager no window is ever active, and an inactive application hides its popups.
start_window_manager() {
    # While a window flies to where it is minimised, its program is told places on the way as its own.
    sed 's,<animateIconify>yes<,<animateIconify>no<,' /etc/xdg/openbox/rc.xml >"$display_scratch/rc.xml"
    openbox --sm-disable --config-file "$display_scratch/rc.xml" \
        >"$display_scratch/openbox.log" 2>&1 &
    display_manager_pid=$!
    if ! wait_until 20 window_manager_answers; then
        printf 'error: the window manager did not start\n' >&2
        cat "$display_scratch/openbox.log" >&2
        return 1
    fi
}

# stop_process PID: ends a child of this shell and waits until it is gone.
stop_process() {
    local pid=$1
    if [[ -z $pid ]]; then
        return 0
    fi
    kill "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
}

# stop_display: safe to call at any time, also when nothing was started.
stop_display() {
    stop_process "$display_manager_pid"
    stop_process "$display_server_pid"
    display_manager_pid=
    display_server_pid=
    if [[ -n $display_scratch ]]; then
        rm -rf "$display_scratch"
        display_scratch=
        unset DISPLAY
    fi
}
