# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# To be sourced. A Debian system in a folder, to build and test in what this machine does not have.
# Needs root and the package debootstrap.

# make_debian_root SUITE FOLDER: once; a folder that is there already is taken as it is.
make_debian_root() {
    local suite=$1 folder=$2
    if [[ -e $folder/.complete ]]; then
        return 0
    fi
    rm -rf "$folder"
    mkdir -p "$folder"
    debootstrap --variant=minbase "$suite" "$folder" >"$folder.log"
    touch "$folder/.complete"
}

# copy_sources FOLDER: the files that git knows, as they are in the work tree.
copy_sources() {
    local folder=$1
    rm -rf "$folder/vidlets"
    mkdir -p "$folder/vidlets"
    git ls-files -z --cached --others --exclude-standard |
        tar cf - --null --files-from=- --ignore-failed-read 2>/dev/null | tar xf - -C "$folder/vidlets"
    # The scripts inside ask git which files there are.
    git -C "$folder/vidlets" init -q
    git -C "$folder/vidlets" add -A
}

# in_debian_root FOLDER COMMAND...: in a mount namespace of its own, so that no mount is left behind
# and none can be reached when the folder is deleted.
in_debian_root() {
    local folder=$1
    shift
    cp /etc/resolv.conf "$folder/etc/resolv.conf"
    # shellcheck disable=SC2016 # The inner shell expands it.
    unshare --mount --propagation private bash -c '
        set -euo pipefail
        folder=$1
        shift
        mount -t proc proc "$folder/proc"
        mount --rbind /dev "$folder/dev"
        exec chroot "$folder" /usr/bin/env -i HOME=/root LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
            PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin "$@"
    ' bash "$folder" "$@"
}
