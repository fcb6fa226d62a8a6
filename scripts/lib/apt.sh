# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# To be sourced. Installs Debian packages, but only those that are missing.

# missing_apt_packages PACKAGE...: prints the packages that are not installed, one per line.
missing_apt_packages() {
    local package status
    for package in "$@"; do
        status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
        if [[ $status != installed ]]; then
            printf '%s\n' "$package"
        fi
    done
}

# run_as_root COMMAND...: runs it directly as root, else through sudo without a prompt.
run_as_root() {
    if [[ $(id -u) -eq 0 ]]; then
        "$@"
    elif command -v sudo >/dev/null 2>&1; then
        sudo -n -- "$@"
    else
        printf 'error: root rights are needed for: %s\n' "$*" >&2
        return 1
    fi
}

# ensure_apt_packages PACKAGE...: a machine that has them all is not touched at all, and neither
# is one without apt, where the packages have other names and the build will tell what it lacks.
ensure_apt_packages() {
    if ! command -v dpkg-query >/dev/null 2>&1 || ! command -v apt-get >/dev/null 2>&1; then
        return 0
    fi
    local missing
    mapfile -t missing < <(missing_apt_packages "$@")
    if [[ ${#missing[@]} -eq 0 ]]; then
        return 0
    fi
    printf 'Installing: %s\n' "${missing[*]}" >&2
    run_as_root apt-get update -qq >/dev/null
    run_as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -qq -y --no-install-recommends "${missing[@]}" >/dev/null
}
