# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# To be sourced, after display.sh and with "root" set. Builds the workbench, the example host, and
# runs it for a script. A script that was given a program sets "workbench_program" instead of building.
#
#   trap leave_workbench EXIT
#   build_workbench
#   start_display
#   start_workbench

workbench_program=
start_seconds=30

scratch=$(mktemp -d)
workbench_pid=

# leave_workbench: ends all that was started and removes all that was made on the way.
leave_workbench() {
    stop_workbench
    stop_display
    rm -rf "$scratch"
}

fail() {
    printf 'error: %s\n' "$*" >&2
    if [[ -s $scratch/workbench.log ]]; then
        sed 's/^/  workbench: /' "$scratch/workbench.log" >&2
    fi
    exit 1
}

# Builds in the folder of a preset that is there already, since a second one takes minutes.
build_workbench() {
    local preset=dev folder
    # shellcheck disable=SC2154 # "root" is the script's.
    folder=$root/build
    if [[ ! -e $folder/dev/CMakeCache.txt && -e $folder/release/CMakeCache.txt ]]; then
        preset=release
    fi
    (cd "$root" && cmake --preset "$preset" -DVIDLETS_BUILD_EXAMPLES=ON &&
        cmake --build --preset "$preset" --target workbench) >&2
    workbench_program=$folder/$preset/examples/workbench/workbench
}

# start_workbench ARGUMENT...: returns when the window is up and the controls have their places.
start_workbench() {
    rm -f "$scratch/controls"
    "$workbench_program" --geometry-file "$scratch/controls" --popup-file "$scratch/popup" \
        "$@" >"$scratch/workbench.log" 2>&1 &
    workbench_pid=$!
    wait_until "$start_seconds" controls_are_known || fail 'the workbench did not open its window'
    wait_until "$start_seconds" window_is_active || fail 'the window of the workbench is not active'
}

stop_workbench() {
    stop_process "$workbench_pid"
    workbench_pid=
}

controls_are_known() {
    kill -0 "$workbench_pid" 2>/dev/null || fail 'the workbench has ended'
    [[ -s $scratch/controls ]]
}

window_is_active() {
    [[ $(xdotool getactivewindow getwindowpid 2>/dev/null) == "$workbench_pid" ]]
}

# field FILE KEY: the rest of the first line that begins with the key.
field() {
    awk -v key="$2" '$1 == key { $1 = ""; print substr($0, 2); exit }' "$1"
}
