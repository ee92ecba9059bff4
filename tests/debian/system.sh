# Bare Debian systems to try things in, with no more than apt. Sourced by scripts that run as root and have cmake/packages.sh.

# bare_system FOLDER SUITE: makes FOLDER/SUITE unless it is there.
bare_system() {
    [ ! -d "$1/$2" ] || return 0
    need_packages debootstrap
    echo "== debootstrap $2 into $1/$2"
    mkdir -p "$1"
    rm -rf --one-file-system "$1/$2.part"
    debootstrap --variant=minbase "$2" "$1/$2.part" http://deb.debian.org/debian >"$1/$2.log" || { tail "$1/$2.log" >&2; return 1; }
    mv "$1/$2.part" "$1/$2"
}

# copy_of_system FOLDER SUITE ROOT: makes ROOT anew, to be used up.
copy_of_system() {
    bare_system "$1" "$2"
    rm -rf --one-file-system "$3"
    cp -a --reflink=auto "$1/$2" "$3"
    cp --dereference /etc/resolv.conf "$3/etc/resolv.conf"
}

# inside ROOT USER HOME FOLDER COMMAND: runs the command in the folder. What is mounted for it is gone with its last process.
inside() {
    unshare --mount --pid --fork --kill-child bash -euc '
        mount -t proc proc "$1/proc"
        mount -t tmpfs tmpfs "$1/dev/shm"
        exec chroot --userspec="$2:$2" "$1" /usr/bin/env -i HOME="$3" USER="$2" \
            PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin bash -c "cd \"\$1\" && $5" bash "$4"
        ' bash "$@"
}
